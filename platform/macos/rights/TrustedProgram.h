// Programs that no user can put another in the place of.
#pragma once

#include <string>

#include "base/Result.h"

namespace vantory {

// Fails where the file, or a folder on the way to it, is not the superuser's, or may be written to by somebody else, or
// where a link leads there.
Status checkSuperusersProgram(const std::string& path);

}  // namespace vantory
