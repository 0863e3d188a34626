// From the start of the program to its window on the screen, with a library of 100 backups.

#include <cstdlib>
#include <string>

#include "bench/SampleFiles.h"
#include "bench/SideBySide.h"

using namespace vantory::bench;

namespace {

// On the display that there is, else on none.
std::string platform() {
  const char* display = std::getenv("DISPLAY");
  return display ? std::string("DISPLAY=") + display : "QT_QPA_PLATFORM=offscreen";
}

}  // namespace

int main() {
  ScratchHomes homes;
  const std::string home = homes.create();
  makeLayouts(home, 60);
  for (int i = 0; i < 100; ++i)
    runCommands({{builtProgram("vantory"), "-backup", "Backup " + std::to_string(i)}}, home);
  const auto opening = [&home](const std::string& program) {
    return Run{[=] { runCommands({{"env", platform(), builtProgram(program)}}, home); }, [] { return true; }};
  };
  compare({.name = "window to first paint",
           .goal = 1.6,
           .rounds = 31,
           .ours = [&] { return opening("window_until_paint"); },
           .peer = [&] { return opening("empty_window_until_paint"); }});
}
