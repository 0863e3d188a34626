// Finds items in a Trash without notes.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "base/Result.h"
#include "services/receipts/FileTraits.h"

namespace vantory {

// What tells an item from all others is the same under whatever name it lies there. Each Trash is listed once.
class TrashIndex {
 public:
  // Where the item with these own traits lies in that folder: under the name, or another. Fails with
  // no_such_file_or_directory where it is gone, or the folder is no Trash of the user's.
  Result<std::string> find(const std::string& folder, const std::string& name, const FileTraits& traits);

 private:
  using Items = std::multimap<std::uint64_t, std::string>;  // places, by the number of the item

  Result<const Items*> itemsOf(const std::string& folder);

  std::map<std::string, Items> folders_;
};

}  // namespace vantory
