// Moving what cannot be renamed.
#pragma once

#include <string>

#include "platform/FileSystem.h"
#include "platform/linux/files/FileRights.h"

namespace vantory {

// Moves a file, a folder or a link by a copy, as FileSystem::move() says. `source` and `destination` are for messages,
// and decide who owns the copy.
Result<Notes> moveByCopying(const Place& from, const Place& to, const std::string& source,
                            const std::string& destination, const FileRights& rights);

}  // namespace vantory
