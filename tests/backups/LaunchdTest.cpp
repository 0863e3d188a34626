#include "backups/QWLaunchd.h"

#include <sys/stat.h>

#include "backups/AutosaveSchedule.h"
#include "services/QWAlert.h"
#include "services/QWAuthorization.h"
#include "services/QWCmdUtils.h"
#include "services/QWUserDefaults.h"
#include "tests/backups/BackupsTest.h"

namespace vantory::test {
namespace {

using Call = FakePrivilegedRunner::Call;
using testing::Contains;
using testing::Not;
using testing::StartsWith;

constexpr const char* kLabel = "com.example.Job";

PropertyListDictionary settingsFor(int interval) {
  PropertyListDictionary settings;
  settings.set("Label", kLabel);
  settings.set("Program", "/opt/tool");
  settings.set("ProgramArguments", PropertyListArray{"Tool", "-x"});
  settings.set("StartInterval", interval);
  return settings;
}

class LaunchdTest : public BackupsTest {
 protected:
  LaunchdTest() {
    fakes_.jobs.onCall = [this](const std::string& call) {
      happened(call + (exists(file_) ? " with file" : ""));
      return jobsAnswer_;
    };
    fakes_.privileged.behaviour = [this](const Call& call) {
      happened(call.tool);
      if (call.tool == "/bin/mv" && runnerAnswer_ == 0) std::filesystem::rename(call.arguments[1], call.arguments[2]);
      if (call.tool == "/bin/rm" && runnerAnswer_ == 0) std::filesystem::remove_all(call.arguments[1]);
      return runnerAnswer_;
    };
  }

  // What was asked of the platform, in order, each with the microseconds slept before it.
  void happened(const std::string& what) {
    const Timestamp now = fakes_.clock.now();
    const auto slept = (now.seconds - started_.seconds) * 1000000 + (now.nanoseconds - started_.nanoseconds) / 1000;
    events_.push_back(std::to_string(slept) + " " + what);
  }
  std::vector<std::string> events() {
    started_ = fakes_.clock.now();
    return std::exchange(events_, {});
  }
  std::string folderHint(const std::string& title) const {
    return title + ". Please check you have correct permissions for the directory " + folder_;
  }
  unsigned mode() const {
    struct stat info {};
    return stat(file_.c_str(), &info) == 0 ? info.st_mode & 07777 : 0;
  }

  const std::string folder_ = home_ / "Library/LaunchAgents";
  const std::string file_ = folder_ + "/com.example.Job.plist";
  Status jobsAnswer_;
  int runnerAnswer_ = 0;
  Timestamp started_ = fakes_.clock.now();
  std::vector<std::string> events_;
};

TEST_F(LaunchdTest, WritesAndLoadsAndReplaces) {
  ASSERT_TRUE(QWLaunchd::startLaunchAgent(kLabel, settingsFor(60), true));
  EXPECT_THAT(events(), ElementsAre("0 unload with file", "0 load with file"));
  EXPECT_EQ(*parsePropertyList(readFile(file_))->asDictionary(), settingsFor(60));
  EXPECT_THAT(readFile(file_), StartsWith("<?xml"));
  EXPECT_EQ(mode(), 0644u);
  const Job& job = fakes_.jobs.loaded.back();
  EXPECT_EQ(job.name.file, file_);
  EXPECT_EQ(job.program, "/opt/tool");
  EXPECT_THAT(job.arguments, ElementsAre("Tool", "-x"));
  EXPECT_EQ(job.interval, std::chrono::seconds(60));

  ASSERT_TRUE(QWLaunchd::startLaunchAgent(kLabel, settingsFor(61), true));
  EXPECT_THAT(events(),
              ElementsAre("0 unload with file", "0 remove with file", "500 unload with file", "500 load with file"));
  EXPECT_EQ(*parsePropertyList(readFile(file_))->asDictionary(), settingsFor(61));
  EXPECT_THAT(fakes_.privileged.calls, IsEmpty());
  EXPECT_EQ(fakes_.privileged.requests, 0);
}

TEST_F(LaunchdTest, OnlyAJobWithTheSameIntervalKeepsItsLastRun) {
  const auto lastRunAfter = [&](int interval) {
    EXPECT_TRUE(QWLaunchd::startLaunchAgent(kLabel, settingsFor(interval), true));
    return fakes_.jobs.loaded.back().lastRun;
  };
  EXPECT_EQ(lastRunAfter(60), std::nullopt);
  fakes_.jobs.stamp = Timestamp{1700000000, 0};
  EXPECT_EQ(lastRunAfter(60), fakes_.jobs.stamp);
  EXPECT_EQ(lastRunAfter(61), std::nullopt);
  for (const char* damaged : {"", "<plist><dict><key>StartInterval</key>", "(60)", "{StartInterval = (61);}"}) {
    writeFile(file_, damaged);
    EXPECT_EQ(lastRunAfter(61), std::nullopt);
  }
  ASSERT_TRUE(QWLaunchd::startLaunchAgent(kLabel, {}, true)) << "it is the scheduler that refuses such a job";
  EXPECT_EQ(fakes_.jobs.loaded.back().interval, std::chrono::seconds(0));
}

TEST_F(LaunchdTest, AJobThatCannotBeLoadedIsToldOnce) {
  jobsAnswer_ = Error{std::errc::io_error, "no service manager"};
  EXPECT_TRUE(QWLaunchd::startJob({.job = kLabel, .settings = settingsFor(60)}));
  EXPECT_TRUE(exists(file_));
  EXPECT_THAT(logged(), Contains("Unable to load the job com.example.Job: no service manager").Times(1));
}

TEST_F(LaunchdTest, TakesAdministratorRightsWhereTheUsersFail) {
  QWAuthorization::sharedController(true);
  ASSERT_TRUE(QWLaunchd::startLaunchAgent(kLabel, settingsFor(60), true));
  events();
  files_.heal();
  files_.fail(Operation::Write, std::errc::permission_denied, 1);
  files_.fail(Operation::Remove, std::errc::permission_denied, 1);
  ASSERT_TRUE(QWLaunchd::startLaunchAgent(kLabel, settingsFor(61), true));
  // Still there after the attempt to remove it: 500 us, then 500 us after the privileged removal, a second after the
  // move, and the pauses around the mode.
  EXPECT_THAT(events(), ElementsAre("0 unload with file", "0 remove with file", "500 /bin/rm", "1000 /bin/mv",
                                    "1001500 /bin/chmod", "2001500 unload with file", "2001500 load with file"));
  const std::string draft = home_ / "Library/Caches/com.quarrywell.Vantory/com.example.Job.plist";
  EXPECT_THAT(fakes_.privileged.calls,
              ElementsAre(Call{"/bin/rm", {"-Rdf", file_}}, Call{"/bin/mv", {"-f", draft, file_}},
                          Call{"/bin/chmod", {"644", file_}}));
  EXPECT_EQ(*parsePropertyList(readFile(file_))->asDictionary(), settingsFor(61));
  EXPECT_FALSE(exists(draft));
  EXPECT_THAT(fakes_.systemLog.messages(), ElementsAre("Unable to write plist - trying to authorize..."));
}

TEST_F(LaunchdTest, TellsAtTheWindowThatTheFileCannotBeWritten) {
  std::vector<std::string> sheets;
  QWAlert::sharedController().ask = [&](const AlertTexts& texts) {
    sheets.push_back(texts.messageText + "|" + texts.informativeText);
    return 1;
  };
  const std::string hint = "|Please check you have correct permissions for the directory " + folder_ + ".";
  runnerAnswer_ = 1;
  files_.fail(Operation::Write, std::errc::permission_denied, 1);
  EXPECT_FALSE(QWLaunchd::startLaunchAgent(kLabel, settingsFor(60), true));
  EXPECT_THAT(fakes_.systemLog.messages(), ElementsAre("Unable to write plist - trying to authorize...",
                                                       folderHint("Error: Unable to create LaunchAgent")));
  EXPECT_FALSE(exists(home_ / "Library/Caches/com.quarrywell.Vantory/com.example.Job.plist"));

  files_.refuseWrites();
  EXPECT_FALSE(QWLaunchd::startLaunchAgent(kLabel, settingsFor(60), true));
  EXPECT_EQ(fakes_.systemLog.messages().back(), folderHint("Error: Unable to write LaunchAgent data"));
  EXPECT_THAT(sheets, ElementsAre("Error: Unable to create LaunchAgent" + hint,
                                  "Error: Unable to write LaunchAgent data" + hint));
  EXPECT_THAT(fakes_.jobs.loaded, IsEmpty());
}

TEST_F(LaunchdTest, RemovesWithRightsOnlyWhereAskedTo) {
  const auto writeJob = [&] {
    writeFile(file_, "job");
    files_.heal();
    files_.fail(Operation::Remove, std::errc::permission_denied, 1);
    events();
  };
  writeJob();
  QWLaunchd::removeJob(kLabel, true, true, false);
  EXPECT_TRUE(exists(file_));
  happened("end");
  EXPECT_THAT(events(), ElementsAre("0 unload with file", "0 remove with file", "500 end"));

  writeJob();
  QWLaunchd::removeLaunchAgent(kLabel, false);
  EXPECT_FALSE(exists(file_));
  EXPECT_THAT(events(), ElementsAre("0 unload with file", "0 remove with file", "0 /bin/rm"));

  QWCmdUtils::sharedController().setHasGUI(false);
  runnerAnswer_ = 1;
  writeJob();
  QWLaunchd::removeLaunchAgent(kLabel, true);
  happened("end");
  EXPECT_EQ(events().back(), "0 end");
  EXPECT_THAT(logged(), Contains(folderHint("Error: Unable to remove LaunchAgent")));
  EXPECT_THAT(fakes_.systemLog.messages(), ElementsAre(folderHint("Error: Unable to remove LaunchAgent")));

  QWLaunchd::stopJob("com.example.Other", true, true, true);
  EXPECT_THAT(events(), ElementsAre("0 unload with file", "0 remove with file"));
}

TEST_F(LaunchdTest, KnowsTheMachinesJobsFromTheUsers) {
  QWLaunchd::removeJob(kLabel, false, false, false);
  EXPECT_EQ(fakes_.jobs.removed.back().file, machine_ / "Library/LaunchDaemons/com.example.Job.plist");
  EXPECT_EQ(fakes_.jobs.removed.back().domain, JobName::Domain::Machine);
  EXPECT_TRUE(QWLaunchd::startJob(
      {.job = kLabel, .settings = settingsFor(60), .user = false, .launchAgent = false, .shouldAuth = true}));
  EXPECT_TRUE(exists(machine_ / "Library/LaunchDaemons/com.example.Job.plist"));
  EXPECT_EQ(fakes_.privileged.calls.back(),
            (Call{"/bin/chmod", {"644", machine_ / "Library/LaunchDaemons/com.example.Job.plist"}}));

  fakes_.users.superuser = true;
  fakes_.users.console = std::nullopt;
  events();
  EXPECT_FALSE(QWLaunchd::startLaunchAgent(kLabel, settingsFor(60), true));
  QWLaunchd::removeLaunchAgent(kLabel, true);
  EXPECT_THAT(events(), IsEmpty());
}

TEST_F(LaunchdTest, TheSettingsDecideOnTheSchedule) {
  QWUserDefaults& settings = QWUserDefaults::standardUserDefaults();
  const std::string file = folder_ + "/com.quarrywell.VantoryAutoSave.plist";
  writeFile(file, "job");
  AutosaveSchedule::applyAtStart();
  EXPECT_TRUE(exists(file)) << "off at the start: all stays";
  EXPECT_THAT(events(), IsEmpty());

  ASSERT_TRUE(settings.setObject("periodicAutosave", 1));
  for (const auto& [days, seconds] : std::vector<std::pair<std::int64_t, std::int64_t>>{
           {0, 86400}, {-3, 86400}, {1, 86400}, {7, 604800}, {30, 2592000}, {INT64_MAX, INT64_MAX / 86400 * 86400}}) {
    ASSERT_TRUE(settings.setObject("autosaveFrequency", days));
    AutosaveSchedule::apply();
    EXPECT_EQ(fakes_.jobs.loaded.back().interval.count(), seconds);
  }
  PropertyListDictionary expected;
  expected.set("Label", "com.quarrywell.VantoryAutoSave");
  expected.set("Program", "/opt/vantory/vantory");
  expected.set("ProgramArguments", PropertyListArray{"Vantory", "-autobackup"});
  expected.set("StartInterval", 86400);
  ASSERT_TRUE(settings.removeObjectForKey("autosaveFrequency"));
  AutosaveSchedule::applyAtStart();
  EXPECT_EQ(*parsePropertyList(readFile(file))->asDictionary(), expected);
  EXPECT_THAT(logged(), Contains("Reloading autosave launchd job").Times(7));

  ASSERT_TRUE(settings.setObject("periodicAutosave", 2));
  AutosaveSchedule::apply();
  EXPECT_FALSE(exists(file));
  EXPECT_EQ(fakes_.jobs.removed.back().label, "com.quarrywell.VantoryAutoSave");
  EXPECT_THAT(logged(), Contains("Removing autosave launchd job"));
}

}  // namespace
}  // namespace vantory::test
