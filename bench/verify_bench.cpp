// "--verify" against "xxh128sum -c" of the same files, each with two threads.

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "bench/SampleFiles.h"
#include "bench/SideBySide.h"

using namespace vantory::bench;
namespace fs = std::filesystem;

namespace {

// Two lists of checksums for the files of a backup.
Command checkingBothHalves(const std::string& home, const std::string& backup) {
  const std::string lists = home + "/list";
  runCommands(
      {{"sh", "-c",
        "cd \"$1\" && find . -type f ! -name Settings.plist -print0 | LC_ALL=C sort -z | xargs -0 xxh128sum >\"$2\" && "
        "split -n r/2 \"$2\" \"$2.\"",
        "sh", backup, lists}},
      home);
  return {"sh", "-c",   "cd \"$1\" && { xxh128sum -c --quiet \"$2.aa\" & xxh128sum -c --quiet \"$2.ab\" && wait $!; }",
          "sh", backup, lists};
}

void compareChecks(const char* name, int rounds, const std::string& home, const char* key) {
  runCommands({{builtProgram("vantory"), "-backup", "Setup", key}}, home);
  const Command peer = checkingBothHalves(home, backupPath(home, "Setup"));
  const auto run = [&](const Command& command) {
    return Run{[&] { runCommands({command}, home); }, [] { return true; }};
  };
  const Command ours{builtProgram("vantory"), "--verify", "Setup"};
  compare({.name = name,
           .goal = 1 / 0.9,
           .rounds = rounds,
           .ours = [&] { return run(ours); },
           .peer = [&] { return run(peer); }});
}

}  // namespace

int main() {
  ScratchHomes homes;
  const std::string many = homes.create();
  makeButtonBars(many, 3000);
  compareChecks("verify, a folder of 3,000 files", 15, many, kButtonBarsKey);
  const std::string large = homes.create();
  for (const std::string& file : makeLayouts(large, 4)) makeFile(file, 256 << 20);
  compareChecks("verify, four files of 256 MB", 7, large, kLayoutsKey);
}
