// What the program's entry does on every system.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/Platform.h"
#include "tasks/homes/HomeOptions.h"

namespace vantory {

class ProgressLine;

// The line of progress may be null.
using PlatformUse = std::function<void(Platform&, ProgressLine*)>;
// Makes the system's platform for a command line, lends it for one use, and takes it down.
using LendPlatform =
    std::function<void(const std::vector<std::string>& arguments, bool showsProgress, const PlatformUse& use)>;

// Runs what the command line asks for: in the user's home, in the one that it names, or in many, each by its owner
// where the process is the superuser's. A platform is made only when it is known in whose name. Answers the exit code.
int start(HomeOptions options, const LendPlatform& lendPlatform);

}  // namespace vantory
