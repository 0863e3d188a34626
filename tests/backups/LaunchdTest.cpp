#include "backups/QWLaunchd.h"

#include "backups/AutosaveSchedule.h"
#include "base/PropertyListBytes.h"
#include "services/QWCmdUtils.h"
#include "services/files/QWAuthorization.h"
#include "services/messages/QWAlert.h"
#include "services/settings/QWUserDefaults.h"
#include "tests/backups/BackupsTest.h"

namespace vantory::test {
namespace {

using Call = FakePrivilegedRunner::Call;
using testing::Contains;

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
    fakes_.jobs.onCall = [this](const std::string& call) { return events_.push_back(call), Status(); };
    fakes_.privileged.behaviour = [this](const Call& call) {
      events_.push_back(call.tool);
      if (call.tool == "/bin/mv" && runnerAnswer_ == 0) std::filesystem::rename(call.arguments[1], call.arguments[2]);
      if (call.tool == "/bin/mkdir") std::filesystem::create_directories(call.arguments.back());
      if (call.tool == "/bin/rm" && runnerAnswer_ == 0) std::filesystem::remove_all(call.arguments[1]);
      return runnerAnswer_;
    };
  }

  bool start(int interval) { return QWLaunchd::startLaunchAgent(kLabel, settingsFor(interval), true); }
  // What was asked of the platform, in order, since the last call.
  std::vector<std::string> events() { return std::exchange(events_, {}); }
  std::string folderHint(const std::string& title) const {
    return title + ". Please check you have correct permissions for the directory " + folder_;
  }

  const std::string folder_ = home_ / "Library/LaunchAgents";
  const std::string file_ = folder_ + "/com.example.Job.plist";
  const std::string draft_ = home_ / "Library/Caches/com.quarrywell.Vantory/com.example.Job.plist";
  int runnerAnswer_ = 0;
  std::vector<std::string> events_;
};

TEST_F(LaunchdTest, ReplacesADamagedJob) {
  fakes_.jobs.stamp = Timestamp{1700000000, 0};
  writeFile(file_, "<plist><dict><key>StartInterval</key>");
  ASSERT_TRUE(start(61));
  EXPECT_EQ(fakes_.jobs.loaded.back().lastRun, std::nullopt) << "another interval, for all that can be told";
  EXPECT_THAT(events(), ElementsAre("load"));
  EXPECT_EQ(*parsePropertyList(readFile(file_))->asDictionary(), settingsFor(61));
  EXPECT_EQ(std::filesystem::status(file_).permissions(), std::filesystem::perms(0644));
  EXPECT_EQ(fakes_.privileged.requests, 0);
}

TEST_F(LaunchdTest, TakesAdministratorRightsWhereTheUsersFail) {
  QWAuthorization::sharedController(true);
  ASSERT_TRUE(start(60));
  files_.heal();
  files_.fail(Operation::Write, std::errc::permission_denied, 1);
  files_.fail(Operation::Remove, std::errc::permission_denied, 1);
  ASSERT_TRUE(start(61));
  EXPECT_THAT(fakes_.privileged.calls,
              ElementsAre(Call{"/bin/rm", {"-Rdf", file_}}, Call{"/bin/mv", {"-f", draft_, file_}},
                          Call{"/bin/chmod", {"644", file_}}));
  EXPECT_EQ(*parsePropertyList(readFile(file_))->asDictionary(), settingsFor(61));
  EXPECT_FALSE(exists(draft_));
}

TEST_F(LaunchdTest, AMachineJobsFolderIsMadeWithItsRights) {
  QWAuthorization::sharedController(true);
  files_.fail(Operation::MakeFolder, std::errc::permission_denied, 1);
  EXPECT_TRUE(QWLaunchd::startJob({.job = kLabel, .settings = settingsFor(60), .user = false, .launchAgent = false}));
  EXPECT_EQ(fakes_.privileged.calls.front(), (Call{"/bin/mkdir", {"-p", machine_ / "Library/LaunchDaemons"}}));
}

TEST_F(LaunchdTest, TellsAtTheWindowThatTheFileCannotBeWritten) {
  std::vector<std::string> sheets;
  QWAlert::sharedController().ask = [&](const AlertTexts& texts) {
    EXPECT_EQ(exists(draft_), sheets.empty()) << "it goes once the error is told";
    sheets.push_back(texts.messageText + "|" + texts.informativeText);
    return 1;
  };
  runnerAnswer_ = 1;
  files_.fail(Operation::Write, std::errc::permission_denied, 1);
  EXPECT_FALSE(start(60));
  EXPECT_THAT(fakes_.systemLog.messages(), ElementsAre("Unable to write plist - trying to authorize...",
                                                       folderHint("Error: Unable to create LaunchAgent")));
  EXPECT_FALSE(exists(draft_));

  files_.refuseWrites();
  EXPECT_FALSE(start(60));
  EXPECT_EQ(fakes_.systemLog.messages().back(), folderHint("Error: Unable to write LaunchAgent data"));
  const std::string hint = "|Please check you have correct permissions for the directory " + folder_ + ".";
  EXPECT_THAT(sheets, ElementsAre("Error: Unable to create LaunchAgent" + hint,
                                  "Error: Unable to write LaunchAgent data" + hint));
  EXPECT_THAT(fakes_.jobs.loaded, IsEmpty());
}

TEST_F(LaunchdTest, RemovesWithRightsOnlyWhereAskedTo) {
  const auto writeJob = [&] {
    writeFile(file_, "job");
    files_.heal();
    files_.fail(Operation::Remove, std::errc::permission_denied, 1);
  };
  writeJob();
  QWLaunchd::stopJob(kLabel, true, true, false);
  EXPECT_THAT(events(), ElementsAre("unload", "remove"));
  QWLaunchd::removeJob(kLabel, true, true, false);
  EXPECT_TRUE(exists(file_));
  EXPECT_THAT(events(), ElementsAre("unload", "remove"));
  writeJob();
  QWLaunchd::removeLaunchAgent(kLabel, false);
  EXPECT_FALSE(exists(file_));
  EXPECT_THAT(events(), ElementsAre("unload", "remove", "/bin/rm"));

  QWCmdUtils::sharedController().setHasGUI(false);
  runnerAnswer_ = 1;
  writeJob();
  QWLaunchd::removeLaunchAgent(kLabel, true);
  EXPECT_THAT(logged(), Contains(folderHint("Error: Unable to remove LaunchAgent")));
  EXPECT_THAT(fakes_.systemLog.messages(), ElementsAre(folderHint("Error: Unable to remove LaunchAgent")));
}

TEST_F(LaunchdTest, TheSuperuserSchedulesNothingForNobody) {
  fakes_.users.superuser = true;
  fakes_.users.console = std::nullopt;
  EXPECT_FALSE(start(60));
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
  for (const auto& [days, seconds] :
       {std::pair{std::int64_t{-3}, std::int64_t{86400}}, {7, 604800}, {INT64_MAX, INT64_MAX / 86400 * 86400}}) {
    ASSERT_TRUE(settings.setObject("autosaveFrequency", days));
    AutosaveSchedule::applyAtStart();
    EXPECT_EQ(fakes_.jobs.loaded.back().interval.count(), seconds);
  }
  EXPECT_EQ(fakes_.jobs.loaded.back().program, "/opt/vantory/vantory");
  EXPECT_THAT(fakes_.jobs.loaded.back().arguments, ElementsAre("Vantory", "-autobackup"));

  ASSERT_TRUE(settings.setObject("periodicAutosave", 2));
  AutosaveSchedule::apply();
  EXPECT_FALSE(exists(file));
  EXPECT_EQ(fakes_.jobs.removed.back().label, "com.quarrywell.VantoryAutoSave");
}

}  // namespace
}  // namespace vantory::test
