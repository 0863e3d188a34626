// The windowed program, which the other one becomes when it is given no task.

#include <iostream>

#include "base/Paths.h"
#include "platform/Users.h"
#include "platform/linux/LinuxPlatform.h"
#include "platform/linux/session/LinuxSingleInstance.h"
#include "platform/linux/system/LinuxCrashReports.h"
#include "platform/posix/processes/PosixTerminationSignals.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"
#include "services/threads/MainThread.h"
#include "window/application/WindowProgram.h"

int main(int argumentCount, char** arguments) {
  vantory::LinuxPlatform platform({arguments, arguments + argumentCount}, "vantory");
  vantory::Runtime runtime(platform.platform());
  runtime.shared<vantory::MainThread>();
  const auto user = platform.platform().users.processUser();
  // Not into somebody else's home.
  if (const auto logs = vantory::QWLocalPaths::logDirectory(true); logs && user && logs->starts_with(user->home + "/"))
    vantory::writeCrashReports(vantory::paths::join(*logs, "CrashReporter"), "Vantory");
  vantory::LinuxSingleInstance instance(user ? user->home : "", vantory::displayOfSession());
  vantory::PosixTerminationSignals signals;
  return vantory::runWindow(argumentCount, arguments, instance, signals, std::cerr);
}
