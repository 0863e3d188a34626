// Folders: made, read, and removed with all that they hold.
#pragma once

#include <string>
#include <vector>

#include "base/Result.h"
#include "platform/FileSystem.h"
#include "platform/posix/files/Place.h"

namespace vantory {

class FileRights;

// Creates the folder at an absolute path and those above it, with the mode that the rights say where they are new. A
// folder, or a link to one, that is there already is success.
Status createFolders(const std::string& path, const FileRights& rights);

// The entries of a folder that is open for reading, from its beginning.
Result<std::vector<DirectoryEntry>> readFolder(int folder, const std::string& path, Detail detail);

// Gives the owner all rights to an open folder that is the caller's own; false when it is not or that failed. Works on
// O_PATH descriptors.
bool openUp(int folder);

// Deletes the item called `name` in an open folder (AT_FDCWD for a whole path), a folder with all it holds. Never
// follows a link and never leaves the file system. `path` is for messages and the check.
Status removeItem(int folder, const std::string& name, const std::string& path, const RemovalCheck& check = {});

}  // namespace vantory
