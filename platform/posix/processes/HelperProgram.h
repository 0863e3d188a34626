// Where the program's helper programs lie.
#pragma once

#include <string>

namespace vantory {

// The absolute path of a helper program: in the folder of the running executable, else where an installation with that
// executable keeps them, else where the one that was configured does. Empty when it is nowhere.
std::string helperProgram(const std::string& name);

}  // namespace vantory
