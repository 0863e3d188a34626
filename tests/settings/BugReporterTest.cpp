#include "settings/QWBugReporter.h"

#include "services/messages/QWAlert.h"
#include "services/threads/MainThread.h"
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
  // What a delegate is told at the next start.
  std::vector<std::string> toldAtStart() {
    struct : BugReporterDelegate {
      void applicationDidCrashWithLog(const std::string& log) override { told.push_back(log); }
      std::vector<std::string> told;
    } delegate;
    QWBugReporter::startBugReporter("Vantory", record_, &delegate);
    MainThread::shared().runPending();
    return delegate.told;
  }
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
  start();  // within the same second
  EXPECT_EQ(crash(), path);
  QWBugReporter::stopBugReporter(record_);
  EXPECT_EQ(crash(), std::nullopt);
  fakes_.clock.set({4'000'000'000, 0});  // the report is older than this start
  start();
  EXPECT_EQ(crash(), std::nullopt);
}

TEST_F(BugReporterTest, TheDelegateHearsOfACrashOnceAlsoWhenATaskWasStartedFirst) {
  using Told = std::vector<std::string>;
  start();
  fakes_.crashReports.report = report("core.vantory-window.1000.1.2.3.zst");  // one that the system keeps
  const Told both = {*fakes_.crashReports.report};
  EXPECT_EQ(toldAtStart(), both);
  start();  // finds it, and has nobody to tell
  fakes_.crashReports.report.reset();
  start();
  EXPECT_EQ(toldAtStart(), both);
  EXPECT_EQ(toldAtStart(), Told());
}

TEST_F(BugReporterTest, TheNoticeIsLeftToTheBugReporterAndCanBeSwitchedOff) {
  int notices = 0;
  QWAlert::sharedController().ask = [&](const AlertTexts&) { return ++notices, QWAlert::Default; };
  start();
  const std::string path = report("CrashReporter/Vantory_1.crash");
  fakes_.workspace.paths["com.quarrywell.BugReporter"] = "/BugReporter.app";
  const auto tell = [&] {
    EXPECT_EQ(crash(), path);
    QWBugReporter::showCrashNotice(path);
  };
  tell();
  EXPECT_EQ(fakes_.workspace.opened.size(), 1u);
  fakes_.workspace.paths.clear();
  writeFile(home_ / "Library/Preferences/com.quarrywell.global.plist", "{\"disable-crash-reporter\" = 1;}");
  tell();
  EXPECT_EQ(fakes_.workspace.opened.size(), 1u);
  EXPECT_EQ(notices, 0);
  EXPECT_EQ(fakes_.systemLog.messages(), std::vector<std::string>{"Crash reporter disabled"});
}

}  // namespace
}  // namespace vantory::test
