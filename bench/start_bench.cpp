// What a task costs where there is nothing to do, catalog and log included, over starting any program.

#include <cstdio>
#include <string>

#include "bench/SideBySide.h"

using namespace vantory::bench;

int main() {
  ScratchHomes homes;
  const std::string home = homes.create();
  const auto starting = [&](const Command& command) {
    return Run{[=, &home] { runCommands({command}, home); }, [] { return true; }};
  };
  constexpr double kGoal = 3;
  const Medians times = measure(
      [&] {
        return starting({builtProgram("vantory"), "-list"});
      },
      [&] { return starting({builtProgram("empty_program")}); }, 101);
  std::printf("start of a task: ours %.2f ms, peer %.2f ms, difference %.2f ms (goal %.2f)\n", times.ours, times.peer,
              times.ours - times.peer, kGoal);
}
