// The program's one entry, for tasks and for the window.

#include <unistd.h>

#include <iostream>
#include <string>
#include <utility>
#include <vector>

#include "base/Paths.h"
#include "platform/linux/LinuxPlatform.h"
#include "platform/linux/homes/HomeOwner.h"
#include "platform/linux/homes/LinuxHomeWorkers.h"
#include "platform/posix/system/PosixSystemInfo.h"
#include "programs/vantory/Start.h"
#include "services/Runtime.h"
#include "services/threads/MainThread.h"
#include "tasks/Question.h"
#include "tasks/Refusal.h"
#include "tasks/homes/HomeOptions.h"
#include "tasks/homes/HomeTask.h"
#include "tasks/homes/HomesRun.h"

namespace {

using namespace vantory;

// Before anything else asks whose files are meant.
Status workIn(const std::string& home) {
  const std::string path = paths::absolute(home, PosixSystemInfo({}).workingDirectory());
  if (getuid() != 0) return adoptHome(path);
  const auto owner = ownerOfHome(path);
  return owner ? becomeOwner(*owner) : owner.error();
}

int runOnTerminal(const HomeOptions& options) {
  LinuxPlatform platform(options.arguments, "", LinuxPlatform::Progress::Shown);
  return start(platform.platform(), platform.progressLine(), options.home.has_value());
}

// Each home's process has a platform of its own; this one has none.
int runInMany(const HomeOptions& options) {
  const std::vector<std::string> arguments = argumentsForEach(options.arguments);
  // A preview tells which homes the task would pass over.
  const bool onlyAsks = beginsWithQuestion(options.arguments) && !beginsWithPreview(options.arguments);
  LinuxHomeWorkers workers({.run =
                                [&] {
                                  LinuxPlatform platform(arguments);
                                  Runtime runtime(platform.platform());
                                  runtime.isHomeNamed = true;
                                  runtime.shared<MainThread>();
                                  return runInHome();
                                },
                            .passesOverBusyHomes = !options.busy && !onlyAsks});
  const PosixSystemInfo system({});
  const bool showsProgress = system.hasTerminal();
  return runHomes(options, system.workingDirectory(), workers,
                  {std::cin, std::cout, std::cerr, showsProgress ? &std::cerr : nullptr});
}

}  // namespace

int main(int argumentCount, char** arguments) {
  HomeOptions options = readHomeOptions({arguments, arguments + argumentCount});
  if (options.home && !options.fault)
    if (const Status status = workIn(*options.home); !status.ok()) options.fault = status.error().text;
  if (options.fault) return refuseLine(*options.fault, options.arguments, std::cout, std::cerr);
  return options.isForMany() ? runInMany(options) : runOnTerminal(options);
}
