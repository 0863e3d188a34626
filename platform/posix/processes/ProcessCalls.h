// Waiting for a child, but not for ever.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>

namespace vantory {

// Blocks until the child has ended: its exit status, or 128 plus the signal that ended it. None when it runs on after
// the time; it is then still to be collected. Any thread.
std::optional<int> waitForChild(pid_t child, std::chrono::milliseconds limit);

}  // namespace vantory
