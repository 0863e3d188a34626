// The Trash of the user, and those of other volumes.
#pragma once

#include <string>

#include "base/Result.h"
#include "platform/FileSystem.h"

namespace vantory::macos {

// Moves an item into the user's Trash folder, or where that is on another volume into the one that the item's own
// volume keeps for this user. The Trash may be one that nobody may look into.
Result<Trashed> putInTrash(const std::string& path, const std::string& usersTrash);

}  // namespace vantory::macos
