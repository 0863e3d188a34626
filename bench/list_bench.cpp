// Reading a library of 1,000 backups of 60 files against "du -sb", which visits each file.

#include <cstdio>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "backups/QWDataController.h"
#include "bench/SampleFiles.h"
#include "bench/SideBySide.h"
#include "platform/linux/LinuxPlatform.h"
#include "services/Runtime.h"
#include "services/threads/MainThread.h"

using namespace vantory::bench;

namespace {

constexpr int kBackups = 1000;
constexpr int kFiles = 60;
constexpr const char* kSizesOption = "--sizes";

void makeBackup(const std::string& backup) {
  makeLayouts(backup + "/Users/user", kFiles);
  std::ofstream(backup + "/Settings.plist") << R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0"><dict><key>Final Cut Pro X</key><array><string>Window Layouts</string></array></dict></plist>
)";
}

// What the window's list needs: each backup's size too. Answers false when the library is not the expected one.
bool readSizes(const char* program) {
  vantory::LinuxPlatform platform({program});
  vantory::Runtime runtime(platform.platform());
  runtime.shared<vantory::MainThread>();
  auto& data = vantory::QWDataController::sharedController();
  data.populateApps();
  data.populateBackups();
  data.measureBackups();
  const auto library = data.backupArray();
  std::uint64_t bytes = 0;
  for (const auto& backup : library) bytes += backup->size();
  return library.size() == kBackups + 1 && bytes > std::uint64_t{kBackups} * kFiles * 1024;
}

Run running(const Command& command, const std::string& home) {
  return {[=] { runCommands({command}, home); }, [] { return true; }};
}

}  // namespace

int main(int argumentCount, char** arguments) {
  if (argumentCount > 1 && arguments[1] == std::string_view(kSizesOption)) return readSizes(arguments[0]) ? 0 : 1;
  ScratchHomes homes;
  const std::string home = homes.create();
  for (int number = 0; number < kBackups; ++number) makeBackup(backupPath(home, "Setup " + std::to_string(number)));
  const Preparation du = [&] { return running({"du", "-sb", home + "/Library/Application Support/Quarrywell"}, home); };
  compare({.name = "list, 1,000 backups of 60 files",
           .goal = 0.10,
           .rounds = 15,
           .ours =
               [&] {
                 return running({builtProgram("vantory"), "-list"}, home);
               },
           .peer = du});
  compare({.name = "list, the same with every size",
           .goal = 0.60,
           .rounds = 15,
           .ours =
               [&] {
                 return running({builtProgram("list_bench"), kSizesOption}, home);
               },
           .peer = du});
}
