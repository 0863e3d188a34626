// Becoming another program, standard streams, waiting for a child.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "base/Result.h"

namespace vantory {

// Becomes the program at an absolute path, with these arguments (its own name first), the same environment and the same
// standard streams. Returns only when that failed.
Status replaceProgram(const std::string& program, const std::vector<std::string>& arguments);

// A file opened later must not become one of the standard streams. Those that are closed are opened the wrong way
// round, so that whoever writes to one is told.
void fillStandardStreams();

// A file-size limit, and a reader that has gone, are from here on errors to report, not the end in the middle of a
// task.
void ignoreFailedWrites();

// What a child's wait status says: its exit status, or 128 plus the signal that ended it.
int endOf(int waitStatus);

// Blocks until the child has ended, and answers as endOf(). None when it runs on after
// the time; it is then still to be collected. Any thread.
std::optional<int> waitForChild(pid_t child, std::chrono::milliseconds limit);

}  // namespace vantory
