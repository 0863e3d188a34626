// Putting backups back in place.
#include <sys/stat.h>

#include "backups/comparison/PartialRestore.h"
#include "services/QWCmdUtils.h"
#include "services/RunningApplicationGuard.h"
#include "tests/backups/BackupsTest.h"

namespace vantory::test {
namespace {

// Decides as told; applications it is not told about do not run.
class FakeGuard : public RunningApplicationGuard {
 public:
  GuardDecision checkRunningAppsForName(const std::string&, const std::string& bundleID, bool closeAuto) override {
    closeAutomatically = closeAuto;
    return decisions.contains(bundleID) ? decisions[bundleID] : GuardDecision::NotRunning;
  }
  bool closeAppWithName(const std::string&, const std::string& bundleID, const std::function<bool()>&) override {
    return bundleID != "stubborn";
  }

  std::map<std::string, GuardDecision> decisions;
  bool closeAutomatically = false;
};

class RestoreTest : public BackupsTest {
 protected:
  // A backup of one file for each application, which all have changed since.
  std::shared_ptr<QWBackup> backupOf(const std::vector<std::string>& bundleIDs) {
    AppList apps;
    for (const std::string& bundleID : bundleIDs) {
      writeFile(prefs(bundleID), "saved");
      apps.push_back(QWApp::appWithName("App " + bundleID, "", bundleID));
      apps.back()->addItemWithName("Preferences", "key" + bundleID, true, {prefs(bundleID)});
    }
    controller().setAppArray(apps);
    EXPECT_EQ(backupOfAll("B")->writeData(report_), WriteResult::Success);
    for (const std::string& bundleID : bundleIDs) writeFile(prefs(bundleID), "changed");
    return QWBackup::backupWithFile(inLibrary("B.vnt"));
  }
  bool isRestored(const std::string& bundleID) const { return readFile(prefs(bundleID)) == "saved"; }

  FakeGuard guard_;
};

TEST_F(RestoreTest, EachRunningApplicationIsDealtWithAsDecided) {
  const auto backup = backupOf({"one", "idle", "skipped", "stubborn", "two", "off"});
  backup->children()[5]->setSelected(Off);
  runtime_.guard = &guard_;
  guard_.decisions = {{"one", GuardDecision::CloseAndRelaunch},
                      {"skipped", GuardDecision::Skip},
                      {"stubborn", GuardDecision::CloseAndRelaunch},
                      {"two", GuardDecision::CloseAndRelaunch},
                      {"off", GuardDecision::Cancel}};
  const Timestamp before = fakes_.clock.now();
  backup->restore(report_, true);
  for (const char* restored : {"one", "idle", "two"}) EXPECT_TRUE(isRestored(restored)) << restored;
  for (const char* left : {"skipped", "stubborn", "off"}) EXPECT_FALSE(isRestored(left)) << left;
  EXPECT_EQ(readFile(inTrash("one")), "changed");
  EXPECT_TRUE(guard_.closeAutomatically);
  EXPECT_THAT(fakes_.workspace.launched, ElementsAre("one", "two"));
  EXPECT_EQ(fakes_.clock.now().seconds, before.seconds + 1);
}

TEST_F(RestoreTest, ThatAnApplicationMayBeRunningIsToldAndNotThatItDoesNot) {
  const auto backup = backupOf({"unknown"});
  runtime_.guard = &guard_;
  guard_.decisions = {{"unknown", GuardDecision::NotKnown}};
  backup->restore(report_);
  EXPECT_TRUE(isRestored("unknown"));
  EXPECT_THAT(report_.remarks(), Contains(HasSubstr("whether App unknown is running")));
  EXPECT_THAT(logged(), Not(Contains(HasSubstr("not running"))));
}

TEST_F(RestoreTest, CancellingKeepsWhatIsRestoredAndRelaunchesNothing) {
  const auto backup = backupOf({"one", "two", "three"});
  runtime_.guard = &guard_;
  guard_.decisions = {{"one", GuardDecision::CloseAndRelaunch}, {"two", GuardDecision::Cancel}};
  files_.heal();
  backup->restore(report_);
  EXPECT_TRUE(isRestored("one"));
  EXPECT_FALSE(isRestored("two"));
  EXPECT_FALSE(isRestored("three"));
  EXPECT_THAT(fakes_.workspace.launched, IsEmpty());
  EXPECT_EQ(files_.calls(Operation::Sync), 1) << "what was restored is on disk";
}

TEST_F(RestoreTest, ADamagedCopyTakesNoLiveFilesPlace) {
  const auto backup = backupOf({"flipped", "whole"});
  const std::string kept = "/Users/user/Library/Preferences/flipped";
  writeFile(inLibrary("B.vnt") + kept, "Saved");
  // Of three others one is damaged too, and one is newer.
  const auto written = std::filesystem::last_write_time(inLibrary("B.vnt"));
  for (const auto& [name, hours] : {std::pair{"Sound", -3}, {"Damaged", -2}, {"Newer", 1}}) {
    const std::string other = inLibrary(name + std::string(".vnt"));
    ASSERT_EQ(std::system(("cp -a '" + inLibrary("B.vnt") + "' '" + other + "'").c_str()), 0);
    if (name != std::string("Damaged")) writeFile(other + kept, "saved");
    std::filesystem::last_write_time(other, written + std::chrono::hours(hours));
  }
  report_ = {};
  backup->restore(report_);
  EXPECT_EQ(readFile(prefs("flipped")), "changed");
  EXPECT_FALSE(exists(inTrash("flipped")));
  EXPECT_TRUE(isRestored("whole"));
  ASSERT_EQ(report_.count(FileReport::Outcome::Failed), 1U);
  EXPECT_THAT(report_.causes(), HasSubstr("flipped: it is damaged"));
  EXPECT_THAT(report_.causes(), HasSubstr("The older backup \"Sound\" has it undamaged: compare that in the Restore"));
  QWCmdUtils::sharedController().setHasGUI(false);
  report_ = {};
  backup->restore(report_);
  EXPECT_THAT(report_.causes(), HasSubstr("vantory -restore \"" + inLibrary("Sound.vnt") + "\" keyflipped"));

  const FileComparison damaged{.path = prefs("flipped"), .before = prefs("flipped"), .after = backup->path() + kept};
  report_ = {};
  restorePartly(backup, {{"keyflipped", {{damaged, {*parseKeyPath("Look")}}}}}, report_);
  EXPECT_THAT(report_.causes(), HasSubstr("--restore-keys \"" + inLibrary("Sound.vnt") + "\" keyflipped \"Look\""));

  // Where only administrator rights could copy it, which they do once the live file has gone.
  metadata_.unwritable = {home_ / "Library/Preferences"};
  files_.fail(Operation::StageCopy, std::errc::permission_denied, FaultyFileSystem::kEveryCall);
  report_ = {};
  backup->restore(report_);
  EXPECT_EQ(readFile(prefs("flipped")), "changed");
  EXPECT_THAT(report_.causes(), HasSubstr("flipped: it is damaged"));
  // They could not tell of a damage in what the user cannot read.
  std::filesystem::remove(inLibrary("B.vnt") + kept);
  ASSERT_EQ(mkfifo((inLibrary("B.vnt") + kept).c_str(), 0600), 0);
  report_ = {};
  backup->restore(report_);
  EXPECT_EQ(readFile(prefs("flipped")), "changed");
  EXPECT_EQ(report_.files().front().outcome, FileReport::Outcome::Failed);
  EXPECT_THAT(report_.causes(), HasSubstr("holds other files than were backed up"));
}

TEST_F(RestoreTest, AnotherUserGetsTheFilesInTheirOwnHome) {
  const auto backup = backupOf({"one"});
  const ScratchFolder other;
  fakes_.users.process->home = other.path();
  const auto app = QWApp::appWithName("App one", "", "one");
  app->addItemWithName("Preferences", "key", true, {other / "Library/Preferences/one"});
  controller().setAppArray({app});
  QWBackup::backupWithFile(backup->path())->restore(report_);
  EXPECT_EQ(readFile(other / "Library/Preferences/one"), "saved");
  EXPECT_FALSE(isRestored("one"));
}

TEST_F(RestoreTest, AvidUsersComeBackAndAreOnDisk) {
  const std::string users = machine_ / "Users/Shared/AvidMediaComposer/Avid Users";
  writeFile(users + "/Anna/Anna Settings.avs", "anna");
  makeFolders(users + "/Empty");
  controller().populateApps();
  EXPECT_EQ(QWBackup::autoBackup()->writeData(report_), WriteResult::Success);
  std::filesystem::remove_all(users);
  ASSERT_EQ(controller().autoBackupArray().size(), 1U);
  const auto backup = controller().autoBackupArray()[0];
  ASSERT_EQ(backup->children().size(), 1U);
  EXPECT_EQ(backup->children()[0]->children()[0]->users().size(), 1U);
  files_.heal();
  backup->restore(report_);
  EXPECT_EQ(readFile(users + "/Anna/Anna Settings.avs"), "anna");
  EXPECT_EQ(files_.calls(Operation::Sync), 2) << "the home and the shared folder";
}

}  // namespace
}  // namespace vantory::test
