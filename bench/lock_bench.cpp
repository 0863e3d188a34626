// "-lock" against "chattr +i" of the same files. Needs the right to set the immutable flag.

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
  compare({.name = "lock, 3,000 files",
           .goal = 0.65,
           .rounds = 15,
           .ours =
               [&] {
                 return locking({builtProgram("vantory"), "-lock", kLayoutsKey});
               },
           .peer = [&] { return locking(changing("+i", files)); }});
  runCommands({changing("-i", files)}, home);
}
