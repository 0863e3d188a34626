// Moving what cannot be renamed.
#pragma once

#include <string>

#include "platform/FileSystem.h"
#include "platform/macos/files/Rights.h"

namespace vantory::macos {

// Moves a file, a folder or a link by a copy, as FileSystem::move() says. Both paths are full.
Result<Notes> moveByCopying(const std::string& source, const std::string& destination, const Rights& rights);

}  // namespace vantory::macos
