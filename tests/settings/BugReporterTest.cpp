#include "settings/QWBugReporter.h"

#include "services/MainThread.h"
#include "tests/services/ServicesTest.h"

namespace vantory::test {
namespace {

class BugReporterTest : public ServicesTest {
 protected:
  BugReporterTest() {
    runtime_.shared<MainThread>();
    // Before every report that a test writes.
    fakes_.clock.set({1'000'000'000, 0});
  }

  void start() { QWBugReporter::startBugReporter("Vantory", record_); }
  auto crash() const { return QWBugReporter::checkForCrashes("Vantory", record_); }
  std::string report(const std::string& relative) const {
    const std::string path = home_ / ("Library/Logs/" + relative);
    writeFile(path, "");
    return path;
  }

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
  fakes_.clock.set({4'000'000'000, 0});  // the report is older than this start
  start();
  EXPECT_EQ(crash(), std::nullopt);
}

}  // namespace
}  // namespace vantory::test
