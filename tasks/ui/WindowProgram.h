// The windowed program, put together.
#pragma once

#include <iosfwd>

namespace vantory {

// Opens the window and answers the exit code once it has been closed. Without a display, or where the program must not
// work, it says so in one line and answers 1. Called once, on the main thread; the arguments outlive the call.
int runWindow(int& argumentCount, char** arguments, std::ostream& errors);

}  // namespace vantory
