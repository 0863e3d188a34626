// The windowed program, which the other one becomes when it is given no task.

#include <iostream>

#include "platform/Users.h"
#include "platform/linux/CrashReportWriter.h"
#include "platform/linux/LinuxPlatform.h"
#include "platform/linux/LinuxSingleInstance.h"
#include "services/MainThread.h"
#include "services/Paths.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"
#include "tasks/ui/WindowProgram.h"

int main(int argumentCount, char** arguments) {
  vantory::LinuxPlatform platform({arguments, arguments + argumentCount}, "vantory");
  vantory::Runtime runtime(platform.platform());
  runtime.shared<vantory::MainThread>();
  if (const auto logs = vantory::QWLocalPaths::logDirectory(true))
    vantory::writeCrashReports(vantory::paths::join(*logs, "CrashReporter"), "Vantory");
  const auto user = platform.platform().users.processUser();
  vantory::LinuxSingleInstance instance(user ? user->home : "", vantory::displayOfSession());
  return vantory::runWindow(argumentCount, arguments, instance, std::cerr);
}
