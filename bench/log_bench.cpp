// A line of the log against "fprintf" and "fflush" of a line of the same form.

#include <cstdio>
#include <cstdlib>
#include <string>

#include "bench/SideBySide.h"
#include "platform/linux/LinuxPlatform.h"
#include "services/Runtime.h"
#include "services/log/QWLog.h"

using namespace vantory;
using namespace vantory::bench;

namespace {

constexpr int kLines = 3000;  // fewer bytes than a log file holds

Run logging(const char* format, const std::string& path) {
  QWLog::createNewLog("Bench");
  return {[=] {
            for (int line = 0; line < kLines; ++line) QWLog::appendLog(format, path);
            QWLog::finishWriting();
          },
          [] { return QWLog::sharedController().bytesWritten() > std::uint64_t{kLines} * 50; }};
}

Run printing(const std::string& home, const char* format, const std::string& path) {
  std::FILE* file = std::fopen((home + "/plain.log").c_str(), "w");
  return {[=] {
            for (int line = 0; line < kLines; ++line) {
              std::fprintf(file, format, "2026-11-14 21:35:17 +0000", path.c_str());
              std::fflush(file);
            }
          },
          [=] { return std::fclose(file) == 0; }};
}

}  // namespace

int main(int, char** arguments) {
  ScratchHomes homes;
  const std::string home = homes.create();
  setenv("HOME", home.c_str(), 1);
  LinuxPlatform platform({arguments[0]});
  Runtime runtime(platform.platform());

  const std::string path = "/Users/anna/Library/Preferences/com.apple.motion.plist";
  compare({.name = "log, 3,000 short lines",
           .goal = 2,
           .rounds = 21,
           .ours = [&] { return logging("Trashing file %@", path); },
           .peer = [&] { return printing(home, "%s - Trashing file %s\n", path); }});
  const std::string longPath = path + "/" + std::string(60, 'x');
  compare({.name = "log, 3,000 long lines",
           .goal = 2,
           .rounds = 21,
           .ours = [&] { return logging("Trashing file %@", longPath); },
           .peer = [&] { return printing(home, "%s - Trashing file %s\n", longPath); }});
}
