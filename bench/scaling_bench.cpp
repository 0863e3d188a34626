// Ten, a hundred, a thousand of a thing: the time for each must not grow.

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <string>

#include "bench/SampleFiles.h"
#include "bench/SideBySide.h"
#include "platform/linux/LinuxPlatform.h"
#include "services/Runtime.h"
#include "services/log/QWLog.h"

using namespace vantory;
using namespace vantory::bench;

namespace {

constexpr double kGoal = 1.1;  // room for noise

// `prepare` makes a run with so many things in it.
void scale(const char* name, int rounds, const std::function<Run(int count)>& prepare) {
  const auto timeForEach = [&](int count) { return medianOf([&] { return prepare(count); }, rounds) / count; };
  const double ten = timeForEach(10);
  const double hundred = timeForEach(100);
  const double thousand = timeForEach(1000);
  std::printf("scaling, %s: of 10 %.4f ms each, of 100 %.4f ms, of 1,000 %.4f ms, growth %.2f (goal %.2f)\n", name, ten,
              hundred, thousand, thousand / hundred, kGoal);
  std::fflush(stdout);
}

Run task(const std::string& home, std::vector<std::string> arguments, std::function<bool()> succeeded) {
  arguments.insert(arguments.begin(), builtProgram("vantory"));
  return {[=] { runCommands({arguments}, home); }, std::move(succeeded)};
}

Run backingUp(const std::string& home, const char* key) {
  return task(home, {"-backup", "Setup", key}, [=] { return entriesIn(backupPath(home, "Setup")) == 2; });
}

Run trashing(const std::string& home, const char* key, int count) {
  return task(home, {"-trash", key}, [=] { return entriesIn(trashFolder(home)) == count; });
}

Run listing(const std::string& home, int count) {
  for (int number = 0; number < count; ++number) {
    const std::string backup = backupPath(home, "Setup " + std::to_string(number));
    makeFile(pathInBackup(backup, home, home + "/Library/Preferences/com.apple.motion.plist"), 4096);
    std::ofstream(backup + "/Settings.plist") << "{ Motion = (Preferences); }";
  }
  return task(home, {"-list"}, [] { return true; });
}

Run logging(int count) {
  QWLog::createNewLog("Bench");
  return {[=] {
            for (int line = 0; line < count; ++line) QWLog::appendLog("Trashing file %@", "/Users/anna/Library");
            QWLog::finishWriting();
          },
          [] { return true; }};
}

}  // namespace

int main(int, char** arguments) {
  ScratchHomes homes;
  const std::string logHome = homes.create();
  setenv("HOME", logHome.c_str(), 1);
  LinuxPlatform platform({arguments[0]});
  Runtime runtime(platform.platform());

  scale("backup of files in a folder", 11, [&](int count) {
    const std::string home = homes.create();
    makeButtonBars(home, count);
    return backingUp(home, kButtonBarsKey);
  });
  scale("backup of single files", 11, [&](int count) {
    const std::string home = homes.create();
    makeLayouts(home, count);
    return backingUp(home, kLayoutsKey);
  });
  scale("trash of files", 11, [&](int count) {
    const std::string home = homes.create();
    makeLayouts(home, count);
    return trashing(home, kLayoutsKey, count);
  });
  scale("trash of files of one name", 11, [&](int count) {
    const std::string home = homes.create();
    makeEquallyNamed(home, count);
    return trashing(home, kEquallyNamedKey, count);
  });
  scale("list of backups", 11, [&](int count) { return listing(homes.create(), count); });
  scale("log lines", 51, [](int count) { return logging(count); });
}
