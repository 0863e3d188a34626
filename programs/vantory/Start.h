// What the program's entry does on every system.
#pragma once

#include "platform/Platform.h"

namespace vantory {

class ProgressLine;

// Runs what the command line asks for, with the program's own output; the line of progress may be null. `isHomeNamed`
// says whether the command line names the home. Answers the exit code.
int start(Platform& platform, ProgressLine* line, bool isHomeNamed = false);

}  // namespace vantory
