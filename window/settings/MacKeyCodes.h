// The Mac's virtual key codes, which shared lists of shortcuts use on every system.
#pragma once

#include <cstdint>
#include <optional>

class QKeyEvent;

namespace vantory {

// The code of the key that bears what the event tells; where no key of the Mac's keyboard does without Shift, of the
// key at the same place. None for keys that the Mac does not have, and for modifiers alone.
std::optional<std::uint32_t> macKeyCode(const QKeyEvent& event);

}  // namespace vantory
