// Running a tool of the system to its end.
#pragma once

#include <chrono>
#include <string>

#include "base/Result.h"
#include "platform/posix/processes/ChildProgram.h"

namespace vantory {

struct ToolEnd {
  int status = 0;  // its exit status, or 128 plus the signal that ended it
  std::string output;
  std::string errors;
};

// Both streams are read here, up to 64 KiB of each. A tool that takes longer than the limit, or leaves its streams open
// for longer, is killed (timed_out). Any thread.
Result<ToolEnd> runTool(ChildProgram tool, std::chrono::milliseconds limit);

// The first line that a tool has said of its failure, or "failed".
std::string faultOf(const ToolEnd& end);

}  // namespace vantory
