// Items by their names in open folders: found, hidden, and removed with all that they hold.
#pragma once

#include <string>
#include <vector>

#include "base/Result.h"
#include "platform/FileSystem.h"
#include "platform/macos/darwin/Darwin.h"
#include "platform/macos/files/Rights.h"
#include "platform/posix/files/Descriptor.h"
#include "platform/posix/files/Place.h"

namespace vantory::macos {

// Why an item could not be opened for reading, by errno: privacy settings forbid as "not permitted" what owner and mode
// would let us do.
Error openingError(const std::string& path);
// What lies below an open folder, reached without any link. An invalid descriptor leaves errno.
Descriptor openBeneath(int folder, const std::string& relative, int flags);

// The entries of a folder that is open for reading, from its beginning.
Result<std::vector<DirectoryEntry>> readFolder(int folder, const std::string& path, Detail detail);
// A folder, and those above it, with the mode that the rights say where they are new.
Status createFolders(const std::string& path, const Rights& rights);
// The same place once more, for another to keep. Its folder is invalid, with errno, where that failed.
Place twinOf(const Place& place);

// Gives a name that nothing has. Also where the volume cannot promise that, which is then looked for first.
int renameKeeping(int fromFolder, const std::string& from, int toFolder, const std::string& to);
// Moves an item, also a folder that its mode closes to its owner.
Status renameItem(const Place& from, const Place& to, const std::string& path);

// Deletes an item, a folder with all it holds. Never follows a link and never leaves the volume.
Status removeItem(int folder, const std::string& name, const std::string& path, const RemovalCheck& check = {});

}  // namespace vantory::macos
