// Putting backups back in place.

#include "services/RunningApplicationGuard.h"
#include "tests/backups/BackupsTest.h"

namespace vantory::test {
namespace {

namespace fs = std::filesystem;

// Decides as told; applications it is not told about do not run.
class FakeGuard : public RunningApplicationGuard {
 public:
  GuardDecision checkRunningAppsForName(const std::string&, const std::string& bundleID, bool closeAuto) override {
    closeAutomatically = closeAuto;
    return decisions.contains(bundleID) ? decisions[bundleID] : GuardDecision::NotRunning;
  }
  bool closeAppWithName(const std::string&, const std::string& bundleID) override { return bundleID != "stubborn"; }

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
    EXPECT_EQ(backupOfAll("B")->writeData(), WriteResult::Success);
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
  const Timestamp before = fake_.clock.now();
  backup->restore(true);
  for (const char* restored : {"one", "idle", "two"}) EXPECT_TRUE(isRestored(restored)) << restored;
  for (const char* left : {"skipped", "stubborn", "off"}) EXPECT_FALSE(isRestored(left)) << left;
  EXPECT_EQ(readFile(inTrash("one")), "changed");
  EXPECT_TRUE(guard_.closeAutomatically);
  EXPECT_THAT(fake_.workspace.launched, ElementsAre("one", "two"));
  EXPECT_EQ(fake_.clock.now().seconds, before.seconds + 1);
}

TEST_F(RestoreTest, CancellingKeepsWhatIsRestoredAndRelaunchesNothing) {
  const auto backup = backupOf({"one", "two", "three"});
  runtime_.guard = &guard_;
  guard_.decisions = {{"one", GuardDecision::CloseAndRelaunch}, {"two", GuardDecision::Cancel}};
  files_.heal();
  backup->restore();
  EXPECT_TRUE(isRestored("one"));
  EXPECT_FALSE(isRestored("two"));
  EXPECT_FALSE(isRestored("three"));
  EXPECT_THAT(fake_.workspace.launched, IsEmpty());
  EXPECT_EQ(files_.calls(Operation::Sync), 1) << "what was restored is on disk";
}

TEST_F(RestoreTest, AnotherUserGetsTheFilesInTheirOwnHome) {
  const auto backup = backupOf({"one"});
  const ScratchFolder other;
  fake_.users.process->home = other.path();
  const auto app = QWApp::appWithName("App one", "", "one");
  app->addItemWithName("Preferences", "key", true, {other / "Library/Preferences/one"});
  controller().setAppArray({app});
  QWBackup::backupWithFile(backup->path())->restore();
  EXPECT_EQ(readFile(other / "Library/Preferences/one"), "saved");
  EXPECT_FALSE(isRestored("one"));
}

TEST_F(RestoreTest, AHostileBackupChangesNothing) {
  const auto backup = backupOf({"file", "folder"});
  const std::string stored = backup->path() + "/Users/user/Library/Preferences/";
  writeFile(machine_ / "secret", "secret");
  fs::remove(stored + "file");
  fs::create_symlink(machine_ / "secret", stored + "file");
  backup->restore();
  EXPECT_EQ(readFile(prefs("file")), "changed");
  EXPECT_TRUE(isRestored("folder"));

  writeFile(prefs("folder"), "changed");
  fs::rename(backup->path() + "/Users/user/Library", machine_ / "Library");
  fs::create_symlink(machine_ / "Library", backup->path() + "/Users/user/Library");
  backup->restore();
  EXPECT_EQ(readFile(prefs("folder")), "changed");
}

}  // namespace
}  // namespace vantory::test
