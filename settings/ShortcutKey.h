// A key with the modifiers held, as the shared shortcut list knows them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace vantory {

// What the list calls modifiers is a sum of these.
enum ShortcutModifier : std::uint16_t {
  kCommandModifier = 0x0100,
  kShiftModifier = 0x0200,
  kOptionModifier = 0x0800,
  kControlModifier = 0x1000
};

struct ShortcutKey {
  std::uint32_t keycode = 0;  // a virtual key code of the Mac's, on every system
  bool shift = false;
  bool ctrl = false;
  bool opt = false;
  bool cmd = false;

  std::uint16_t modifiers() const;
  bool operator==(const ShortcutKey&) const = default;
};

// What a key becomes that a person pressed as a shortcut: no key alone, or with Shift, would be one that types text.
ShortcutKey captured(ShortcutKey pressed);

// What stands on the key of that code, such as "F" or "Page Down"; none for a code that no key has.
std::optional<std::string> keyCodeName(std::uint32_t keycode);

}  // namespace vantory
