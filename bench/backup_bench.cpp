// "-backup" against "cp -a" and "sync -f" of the same files: a backup that is complete is on disk.

#include <cstdio>
#include <filesystem>
#include <string>

#include "bench/SampleFiles.h"
#include "bench/SideBySide.h"

using namespace vantory::bench;
namespace fs = std::filesystem;

namespace {

// One home with the sources, and a new target for each run.
class Backups {
 public:
  explicit Backups(std::string home) : home_(std::move(home)) {}

  Run ours(const char* key, const std::string& lastFile) {
    const std::string name = "Setup " + std::to_string(++runs_);
    last_ = backupPath(home_, name);
    return {[=, this] {
              runCommands({{builtProgram("vantory"), "-backup", name, key}}, home_);
            },
            [=, this] { return fs::exists(pathInBackup(last_, home_, lastFile)); }};
  }

  Run peer(const std::vector<std::string>& sources) {
    last_ = home_ + "/Copy " + std::to_string(++runs_);
    fs::create_directory(last_);
    Command copying{"cp", "-a"};
    copying.insert(copying.end(), sources.begin(), sources.end());
    copying.push_back(last_);
    return {[=, this, target = last_] {
              runCommands({copying, {"sync", "-f", target}}, home_);
            },
            [=, target = last_] { return fs::exists(target + "/" + fs::path(sources.back()).filename().string()); }};
  }

  // For copies too large to keep.
  void removeLast() { fs::remove_all(last_); }

 private:
  std::string home_;
  std::string last_;
  int runs_ = 0;
};

void folderOfManyFiles(ScratchHomes& homes) {
  const std::string home = homes.create();
  const std::string folder = makeButtonBars(home, 3000);
  Backups backups(home);
  compare({.name = "backup, a folder of 3,000 files",
           .goal = 0.80,
           .rounds = 7,
           .ours = [&] { return backups.ours(kButtonBarsKey, folder + "/Bars 9/Bar 2999.fcbtn"); },
           .peer = [&] { return backups.peer({folder}); }});
}

// As a nightly run finds them.
void coldFiles(ScratchHomes& homes) {
  constexpr const char* kName = "backup, 3,000 files, cold";
  if (!canRunCold()) {
    std::printf("%s: skipped, only the superuser can empty the caches\n", kName);
    return;
  }
  const std::string home = homes.create();
  const std::string folder = makeButtonBars(home, 3000);
  Backups backups(home);
  const auto cold = [](Run run) {
    run.isCold = true;
    return run;
  };
  compare({.name = kName,
           .goal = 0.55,
           .rounds = 7,
           .ours = [&] { return cold(backups.ours(kButtonBarsKey, folder + "/Bars 9/Bar 2999.fcbtn")); },
           .peer = [&] { return cold(backups.peer({folder})); }});
}

void singleFiles(ScratchHomes& homes) {
  const std::string home = homes.create();
  const auto files = makeLayouts(home, 60);
  Backups backups(home);
  compare({.name = "backup, 60 single files",
           .goal = 1.0,
           .rounds = 31,
           .ours = [&] { return backups.ours(kLayoutsKey, files.back()); },
           .peer = [&] { return backups.peer(files); }});
}

void largeFiles(ScratchHomes& homes) {
  const std::string home = homes.create();
  const auto files = makeLayouts(home, 4);
  for (const std::string& file : files) makeFile(file, 256 << 20);
  Backups backups(home);
  const auto fresh = [&](auto make) {
    backups.removeLast();
    return make();
  };
  compare({.name = "backup, four files of 256 MB",
           .goal = 1.1,
           .rounds = 5,
           .ours = [&] { return fresh([&] { return backups.ours(kLayoutsKey, files.back()); }); },
           .peer = [&] { return fresh([&] { return backups.peer(files); }); }});
}

}  // namespace

int main() {
  ScratchHomes homes;
  folderOfManyFiles(homes);
  coldFiles(homes);
  singleFiles(homes);
  largeFiles(homes);
}
