// "-restore" against what it does in one go: "gio trash" of the old files, then "cp -a" and "sync -f" of the backup's.

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "bench/SampleFiles.h"
#include "bench/SideBySide.h"

using namespace vantory::bench;
namespace fs = std::filesystem;

namespace {

using MakeFiles = std::vector<std::string> (*)(const std::string& home);

// A home of its own for each run, with the files in place and in a backup.
struct Restorable {
  Restorable(ScratchHomes& homes, MakeFiles makeFiles, const char* key)
      : home(homes.create()), files(makeFiles(home)), backup(backupPath(home, "Setup")) {
    runCommands({{builtProgram("vantory"), "-backup", "Setup", key}}, home);
    // A file that was written this very moment is not copied before its next change would be seen.
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }

  bool restored() const {
    return fs::exists(files.back()) && entriesIn(trashFolder(home)) == static_cast<int>(files.size());
  }

  std::string home;
  std::vector<std::string> files;
  std::string backup;
};

Run ours(const Restorable& place) {
  return {[=] {
            runCommands({{builtProgram("vantory"), "-restore", place.backup}}, place.home);
          },
          [=] { return place.restored(); }};
}

Run peer(const Restorable& place) {
  Command trash{"gio", "trash"};
  Command copy{"cp", "-a"};
  for (const std::string& file : place.files) {
    trash.push_back(file);
    copy.push_back(pathInBackup(place.backup, place.home, file));
  }
  const std::string folder = fs::path(place.files[0]).parent_path();
  copy.push_back(folder);
  return {[=] { runCommands({trash, copy, {"sync", "-f", folder}}, place.home); }, [=] { return place.restored(); }};
}

void compareRestores(const char* name, int rounds, MakeFiles makeFiles, const char* key) {
  ScratchHomes homes;
  compare({.name = name,
           .goal = 1.0,
           .rounds = rounds,
           .ours = [&] { return ours(Restorable(homes, makeFiles, key)); },
           .peer = [&] { return peer(Restorable(homes, makeFiles, key)); }});
}

}  // namespace

int main() {
  compareRestores(
      "restore, a folder of 3,000 files", 5,
      [](const std::string& home) { return std::vector<std::string>{makeButtonBars(home, 3000)}; }, kButtonBarsKey);
  compareRestores(
      "restore, 60 single files", 21, [](const std::string& home) { return makeLayouts(home, 60); }, kLayoutsKey);
}
