// What the program says about itself.
#pragma once

#include <iosfwd>

namespace vantory {

void printHelp(std::ostream& output);
void printVersion(std::ostream& output);

}  // namespace vantory
