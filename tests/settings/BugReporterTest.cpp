#include <gtest/gtest.h>

#include "platform/linux/LinuxFileMetadata.h"
#include "platform/linux/LinuxFileSystem.h"
#include "services/MainThread.h"
#include "services/Runtime.h"
#include "settings/QWBugReporter.h"
#include "tests/support/FakePlatform.h"
#include "tests/support/ScratchFolder.h"

namespace vantory::test {
namespace {

class BugReporterTest : public ::testing::Test {
 protected:
  BugReporterTest() {
    runtime_.shared<MainThread>();
    // Before every report that a test writes.
    fake_.clock.set({1'000'000'000, 0});
  }

  void start() { QWBugReporter::startBugReporter("Vantory", record_); }
  auto crash() const { return QWBugReporter::checkForCrashes("Vantory", record_); }
  std::string report(const std::string& relative) const {
    const std::string path = home_ / ("Library/Logs/" + relative);
    writeFile(path, "");
    return path;
  }

  ScratchFolder home_;
  ScratchFolder machine_;
  LinuxFileSystem files_;
  LinuxFileMetadata metadata_;
  FakePlatform fake_{files_, metadata_, machine_.path(), home_.path()};
  Runtime runtime_{fake_.platform};
  const std::string record_ = home_ / "Library/Preferences/com.quarrywell.Vantory.plist";
};

TEST_F(BugReporterTest, ACrashIsAReportNewerThanAStartWithoutAnEnd) {
  const std::string path = report("DiagnosticReports/vantory_2026.crash");
  report("CrashReporter/Other_1.crash");
  EXPECT_EQ(crash(), std::nullopt);  // never started
  start();
  EXPECT_EQ(crash(), path);
  QWBugReporter::stopBugReporter(record_);
  EXPECT_EQ(crash(), std::nullopt);
  fake_.clock.set({4'000'000'000, 0});  // the report is older than this start
  start();
  EXPECT_EQ(crash(), std::nullopt);
}

}  // namespace
}  // namespace vantory::test
