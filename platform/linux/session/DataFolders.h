// Where applications and file types are declared.
#pragma once

#include <string>
#include <vector>

namespace vantory {

// The user's own data folder, the most important one first, then the machine's. `environment` tells whether the
// variables of this process are the user's; the superuser's process must not ask for them.
std::vector<std::string> dataFolders(const std::string& home, bool environment);

}  // namespace vantory
