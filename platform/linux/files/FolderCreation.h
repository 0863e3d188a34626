// Making folders.
#pragma once

#include <string>

#include "base/Result.h"

namespace vantory {

class FileRights;

// Creates the folder at an absolute path and those above it, with the mode that the rights say where they are new. A
// folder, or a link to one, that is there already is success.
Status createFolders(const std::string& path, const FileRights& rights);

}  // namespace vantory
