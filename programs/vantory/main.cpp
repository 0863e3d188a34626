// The program's one entry, for tasks and for the window.

#include <iostream>
#include <optional>

#include "platform/linux/LinuxPlatform.h"
#include "platform/posix/processes/ProcessCalls.h"
#include "platform/posix/progress/ProgressLine.h"
#include "services/Runtime.h"
#include "services/threads/MainThread.h"
#include "tasks/Program.h"

int main(int argumentCount, char** arguments) {
  vantory::LinuxPlatform platform({arguments, arguments + argumentCount}, "", vantory::LinuxPlatform::Progress::Shown);
  std::optional<vantory::BeforeOutput> beforeOutput, beforeErrors;
  // What is printed does not share a row with the line of progress.
  if (vantory::ProgressLine* line = platform.progressLine()) {
    beforeOutput.emplace(std::cout, [line] { line->end(); });
    beforeErrors.emplace(std::cerr, [line] { line->clear(); });
  }
  vantory::Runtime runtime(platform.platform());
  runtime.shared<vantory::MainThread>();
  return vantory::runProgram(std::cout, std::cerr, vantory::replaceProgram);
}
