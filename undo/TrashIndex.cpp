// Compares what lies in a Trash with what a receipt says of it.
#include "undo/TrashIndex.h"

#include <algorithm>

#include "base/Paths.h"
#include "platform/FileSystem.h"
#include "services/Runtime.h"
#include "undo/TrashContents.h"

namespace vantory {

// Names are looked at once more: they may be others' by now.
Result<std::string> TrashIndex::find(const std::string& folder, const std::string& name, const FileTraits& traits) {
  const Error missing{std::errc::no_such_file_or_directory, name + " is not in the Trash."};
  if (!isUsersTrash(folder)) return missing;
  const auto isIt = [&](const std::string& place) {
    const auto present = ownTraitsOf(place);
    return present && *present == traits;
  };
  if (const std::string place = paths::join(folder, name); isIt(place)) return place;
  const auto items = itemsOf(folder);
  if (!items) return items.error();
  const auto [begin, end] = (*items)->equal_range(traits.identity.number);
  const auto found = std::find_if(begin, end, [&](const auto& item) { return isIt(item.second); });
  if (found == end) return missing;
  return found->second;
}

Result<const TrashIndex::Items*> TrashIndex::itemsOf(const std::string& folder) {
  if (const auto known = folders_.find(folder); known != folders_.end()) return &known->second;
  FileSystem& files = Runtime::current().platform().files;
  const auto entries = files.list(folder, Detail::Names);
  if (!entries) return entries.error();
  Items& items = folders_[folder];
  for (const DirectoryEntry& entry : *entries) {
    const std::string place = paths::join(folder, entry.name);
    if (const auto info = files.info(place, Links::DoNotFollow)) items.emplace(info->identity.number, place);
  }
  return &items;
}

}  // namespace vantory
