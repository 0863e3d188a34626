// Handing the process over to another program.
#pragma once

#include <string>
#include <vector>

#include "base/Result.h"

namespace vantory {

// Becomes the program at an absolute path, with these arguments (its own name first), the same environment and the same
// standard streams. Returns only when that failed.
Status replaceProgram(const std::string& program, const std::vector<std::string>& arguments);

}  // namespace vantory
