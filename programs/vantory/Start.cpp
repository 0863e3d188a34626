// Makes the runtime, and keeps the output and the line of progress apart.
#include "programs/vantory/Start.h"

#include <iostream>
#include <optional>

#include "platform/posix/processes/ProcessCalls.h"
#include "platform/posix/progress/ProgressLine.h"
#include "services/Runtime.h"
#include "services/threads/MainThread.h"
#include "tasks/Program.h"

namespace vantory {

int start(Platform& platform, ProgressLine* line, bool isHomeNamed) {
  std::optional<BeforeOutput> beforeOutput, beforeErrors;
  // What is printed does not share a row with the line of progress.
  if (line) {
    beforeOutput.emplace(std::cout, [line] { line->end(); });
    beforeErrors.emplace(std::cerr, [line] { line->clear(); });
  }
  Runtime runtime(platform);
  runtime.isHomeNamed = isHomeNamed;
  runtime.shared<MainThread>();
  return runProgram(std::cout, std::cerr, replaceProgram);
}

}  // namespace vantory
