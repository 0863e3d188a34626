// Reading folders through descriptors.
#pragma once

#include <string>
#include <vector>

#include "platform/FileSystem.h"

namespace vantory {

// The kind of item that a mode tells of.
FileType typeOfMode(unsigned mode);

// The entries of a folder that is open for reading, from its beginning.
Result<std::vector<DirectoryEntry>> readFolder(int folder, const std::string& path, Detail detail);

// Gives the owner all rights to an open folder that is the caller's own; false when it is not or that failed. Works on
// O_PATH descriptors.
bool openUp(int folder);

}  // namespace vantory
