// "-lock" against "chattr +i" of the same files: with the right to set the immutable flag, which the benchmark needs,
// and through the lock helper, where it has its capability.

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "bench/SampleFiles.h"
#include "bench/SideBySide.h"

using namespace vantory::bench;

namespace {

Command changing(const char* flag, const std::vector<std::string>& files) {
  Command command{"chattr", flag};
  command.insert(command.end(), files.begin(), files.end());
  return command;
}

// The program as somebody runs it who has no right to set the flag.
Command asOrdinaryUser(const Command& task) {
  Command command{"setpriv", "--inh-caps=-all", "--ambient-caps=-all"};
  command.insert(command.end(), task.begin(), task.end());
  return command;
}

bool locked(const std::string& file) {
  return !std::ofstream(file, std::ios::app).is_open();
}

}  // namespace

int main() {
  ScratchHomes homes;
  const std::string home = homes.create();
  const auto files = makeLayouts(home, 3000);
  if (!tryCommand(changing("+i", {files[0]}), home)) {
    std::puts("lock, 3,000 files: left out, this user may not set the immutable flag here");
    return 0;
  }
  const auto locking = [&](const Command& command) {
    runCommands({changing("-i", files)}, home);
    return Run{[=, &home] { runCommands({command}, home); },
               [&] { return locked(files.front()) && locked(files.back()); }};
  };
  const Command task{builtProgram("vantory"), "-lock", kLayoutsKey};
  const auto peer = [&] { return locking(changing("+i", files)); };
  compare(
      {.name = "lock, 3,000 files", .goal = 0.65, .rounds = 15, .ours = [&] { return locking(task); }, .peer = peer});
  runCommands({changing("-i", files)}, home);
  if (tryCommand(asOrdinaryUser(task), home) && locked(files.front()))
    compare({.name = "lock, 3,000 files, through the helper",
             .goal = 1.25,
             .rounds = 15,
             .ours = [&] { return locking(asOrdinaryUser(task)); },
             .peer = peer});
  else
    std::puts(
        "lock, 3,000 files, through the helper: left out, the helper has no capability or does not serve this home");
  runCommands({changing("-i", files)}, home);
}
