// The program's one entry, for tasks and for the window.

#include <iostream>

#include "platform/linux/LinuxPlatform.h"
#include "platform/linux/ProgramReplacement.h"
#include "services/MainThread.h"
#include "services/Runtime.h"
#include "tasks/Program.h"

int main(int argumentCount, char** arguments) {
  vantory::LinuxPlatform platform({arguments, arguments + argumentCount});
  vantory::Runtime runtime(platform.platform());
  runtime.shared<vantory::MainThread>();
  return vantory::runProgram(std::cout, std::cerr, vantory::replaceProgram);
}
