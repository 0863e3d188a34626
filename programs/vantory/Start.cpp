// Becomes who is to do the work, makes the runtime, and keeps the output and the line of progress apart.
#include "programs/vantory/Start.h"

#include <unistd.h>

#include <chrono>
#include <ctime>
#include <iostream>
#include <optional>
#include <string>
#include <utility>

#include "base/Paths.h"
#include "platform/posix/homes/HomeOwner.h"
#include "platform/posix/homes/PosixHomeWorkers.h"
#include "platform/posix/homes/RecentChanges.h"
#include "platform/posix/processes/ProcessCalls.h"
#include "platform/posix/progress/ProgressLine.h"
#include "platform/posix/system/PosixSystemInfo.h"
#include "services/Runtime.h"
#include "services/receipts/Receipt.h"
#include "services/threads/MainThread.h"
#include "tasks/Program.h"
#include "tasks/Question.h"
#include "tasks/Refusal.h"
#include "tasks/TaskCommand.h"
#include "tasks/homes/HomeTask.h"
#include "tasks/homes/HomesRun.h"

namespace vantory {

namespace {

constexpr std::chrono::seconds kBusy(60);

// A preview is as good as what it tells of.
bool changesFiles(const std::vector<std::string>& arguments) {
  if (const TaskCommand* previewed = previewedCommand(arguments)) return previewed->deed.has_value();
  const auto chosen = beginsWithQuestion(arguments) ? std::nullopt : chooseCommand(arguments);
  return chosen && chosen->command->deed;
}

// Before anything else asks whose files are meant.
Status workIn(const std::string& home, const std::vector<std::string>& arguments) {
  const std::string path = paths::absolute(home, PosixSystemInfo({}).workingDirectory());
  if (getuid() != 0) {
    const Status isOurs = changesFiles(arguments) ? checkIsNotOthers(path) : Status();
    return isOurs ? adoptHome(path) : isOurs;
  }
  const auto owner = ownerOfHome(path);
  return owner ? becomeOwner(*owner) : owner.error();
}

// Which home is meant was said by whoever started the program.
void nameHome(Runtime& runtime, bool bySuperuser) {
  runtime.isHomeNamed = true;
  runtime.leavesOthersAlone = bySuperuser;
}

int runOnTerminal(Platform& platform, ProgressLine* line, bool isHomeNamed, bool bySuperuser) {
  std::optional<BeforeOutput> beforeOutput, beforeErrors;
  // What is printed does not share a row with the line of progress.
  if (line) {
    beforeOutput.emplace(std::cout, [line] { line->end(); });
    beforeErrors.emplace(std::cerr, [line] { line->clear(); });
  }
  Runtime runtime(platform);
  if (isHomeNamed) nameHome(runtime, bySuperuser);
  runtime.shared<MainThread>();
  return runProgram(std::cout, std::cerr, replaceProgram);
}

// Of no other run on this machine.
std::string nameOfRun() {
  const std::time_t now = std::time(nullptr);
  char moment[32];
  std::strftime(moment, sizeof moment, "%Y%m%d-%H%M%S", std::gmtime(&now));
  return std::string(kRunPrefix) + moment + "-" + std::to_string(getpid());
}

// Each home's process has a platform of its own; this one has none.
int runInMany(const HomeOptions& options, const LendPlatform& lendPlatform) {
  const std::vector<std::string> arguments = argumentsForEach(options.arguments);
  // A preview tells which homes the task would pass over.
  const bool onlyAsks = beginsWithQuestion(options.arguments) && !beginsWithPreview(options.arguments);
  const std::string name = nameOfRun();
  const bool bySuperuser = getuid() == 0;
  const auto onPlatform = [&](const auto& work) {
    lendPlatform(arguments, false, [&](Platform& platform, ProgressLine*) {
      Runtime runtime(platform);
      nameHome(runtime, bySuperuser);
      runtime.manyHomesRun = name;
      runtime.shared<MainThread>();
      work();
    });
  };
  const auto run = [&] {
    HomeResult result;
    onPlatform([&] { result = runInHome(); });
    return result;
  };
  const auto busyFile = [&](const std::string& home) {
    auto found = recentlyChangedFile(home, kBusy);
    if (!found) onPlatform([&] { found = recentlyChangedFile(filesOfCatalog(), kBusy); });
    return found;
  };
  HomeWork work{.run = run, .changesFiles = changesFiles(options.arguments)};
  if (!options.busy && !onlyAsks) work.busyFile = busyFile;
  PosixHomeWorkers workers(std::move(work));
  const PosixSystemInfo system({});
  const bool showsProgress = system.hasTerminal();
  return runHomes(options, name, system.workingDirectory(), workers,
                  {std::cin, std::cout, std::cerr, showsProgress ? &std::cerr : nullptr});
}

}  // namespace

int start(HomeOptions options, const LendPlatform& lendPlatform) {
  const bool bySuperuser = getuid() == 0;  // before it becomes the owner
  if (options.home && !options.fault)
    if (const Status status = workIn(*options.home, options.arguments); !status.ok())
      options.fault = status.error().text;
  if (options.fault) return refuseLine(*options.fault, options.arguments, std::cout, std::cerr);
  if (options.isForMany()) return runInMany(options, lendPlatform);
  int code = 0;
  lendPlatform(options.arguments, true, [&](Platform& platform, ProgressLine* line) {
    code = runOnTerminal(platform, line, options.home.has_value(), bySuperuser);
  });
  return code;
}

}  // namespace vantory
