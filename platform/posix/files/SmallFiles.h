// Files that other programs write and that are expected to be small.
#pragma once

#include <cstddef>
#include <string>

#include "base/Result.h"

namespace vantory {

// The whole content of a regular file, links followed. Fails with file_too_large above the limit; a FIFO or device is
// refused (invalid_argument), never waited for.
Result<std::string> readSmallFile(const std::string& path, std::size_t limit);

}  // namespace vantory
