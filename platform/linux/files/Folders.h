// Deleting for good.
#pragma once

#include <string>

#include "base/Result.h"

namespace vantory {

// How deep a folder may nest to be copied or deleted. A deeper one is refused where it goes deeper.
inline constexpr int kDeepestFolder = 256;

// Deletes the item called `name` in an open folder (AT_FDCWD for a whole path), a folder with all it holds. Never
// follows a link and never leaves the file system. `path` is for messages.
Status removeItem(int folder, const std::string& name, const std::string& path);

}  // namespace vantory
