// The list of shortcuts that all of the maker's programs share.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/PropertyList.h"
#include "base/Result.h"
#include "services/settings/SettingsFile.h"
#include "settings/ShortcutKey.h"

namespace vantory {

// What a shortcut calls: a command by its identifier, by parameters, or by both.
struct ShortcutTarget {
  std::optional<std::string> commandID;
  std::optional<PropertyListArray> params = {};
};

// Every change reads the list anew and replaces it atomically under a lock; what other programs have in it stays. A
// damaged list is set aside under another name, never overwritten. Any thread.
class ShortcutList {
 public:
  ShortcutList();

  struct Entry {
    std::string commandID;                 // empty for one that calls by parameters
    std::optional<std::uint32_t> keycode;  // none where the entry has no number that fits
    std::uint16_t modifiers = 0;
  };
  // This program's entries.
  std::vector<Entry> ownEntries() const;

  // Replaces this program's entry for the target, or adds one. Where the list could not be written, which is in the
  // log, it is as it was.
  Status set(const ShortcutTarget& target, const ShortcutKey& key);
  Status remove(const ShortcutTarget& target);

 private:
  Status change(const ShortcutTarget& target, const std::optional<PropertyListDictionary>& replacement);

  std::unique_ptr<SettingsFile> file_;  // null when nobody is at the console
};

}  // namespace vantory
