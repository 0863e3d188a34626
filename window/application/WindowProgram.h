// The windowed program, put together.
#pragma once

#include <iosfwd>

namespace vantory {

class SingleInstance;
class TerminationSignals;

// Opens the files that the arguments name, and the window where it is needed, and answers the exit code once all is
// done. Where another copy shows its window, that is given the files and 0 answered. Without a display, or where the
// program must not work, it says so in one line and answers 1. Called once, on the main thread; the arguments outlive
// the call.
int runWindow(int& argumentCount, char** arguments, SingleInstance& instance, TerminationSignals& termination,
              std::ostream& errors);

}  // namespace vantory
