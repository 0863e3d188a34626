// Reading folders through descriptors.
#pragma once

#include <string>
#include <vector>

#include "platform/FileSystem.h"
#include "platform/linux/Descriptor.h"

namespace vantory {

// The entries of a folder that was opened for reading, from its beginning.
Result<std::vector<DirectoryEntry>> readFolder(Descriptor folder, const std::string& path, Detail detail);
// The same, keeping the folder open.
Result<std::vector<DirectoryEntry>> readFolder(int folder, const std::string& path, Detail detail);

// Gives the owner all rights to an open folder that is the caller's own; false when it is not or that failed. Works on
// O_PATH descriptors.
bool openUp(int folder);

}  // namespace vantory
