// Comparing a backup of 3,000 unchanged files against "diff -rq", which reads each file.

#include <string>

#include "bench/SampleFiles.h"
#include "bench/SideBySide.h"

using namespace vantory::bench;

namespace {

constexpr int kFiles = 3000;

Run running(const Command& command, const std::string& home) {
  return {[=] { runCommands({command}, home); }, [] { return true; }};
}

}  // namespace

int main() {
  ScratchHomes homes;
  const std::string home = homes.create();
  const std::string live = makeButtonBars(home, kFiles);
  runCommands({{builtProgram("vantory"), "-backup", "Unchanged", kButtonBarsKey}}, home);
  const std::string held = pathInBackup(backupPath(home, "Unchanged"), home, live);
  compare({.name = "compare 3,000 unchanged files",
           .goal = 0.60,
           .rounds = 25,
           .ours =
               [&] {
                 return running({builtProgram("vantory"), "--compare", "Unchanged"}, home);
               },
           .peer =
               [&] {
                 return running({"diff", "-rq", live, held}, home);
               }});
}
