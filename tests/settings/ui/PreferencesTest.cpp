// The settings window's controller.

#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <filesystem>
#include <future>

#include "services/settings/QWUserDefaults.h"
#include "settings/ui/LibraryMove.h"
#include "settings/ui/QWPreferenceController.h"
#include "tests/backups/BackupsTest.h"
#include "tests/backups/ui/FakeViews.h"
#include "tests/services/PersonAtWindow.h"

namespace vantory::test {
namespace {

class FakePreferenceView : public PreferenceView {
 public:
  void showPane(PreferencePane) override {}
  void bringToFront() override {}
  void setBackupPath(const std::string& text) override { path = text; }
  void setBackupRemark(const std::string& text) override { remark = text; }
  void setValue(const std::string& key, long long value) override { values[key] = value; }
  void setHandlerStatus(const HandlerStatus& shown) override { status = shown; }
  void doBehindSheet(const std::string&, const std::function<void()>& work) override { work(); }

  std::string path, remark;
  std::map<std::string, long long> values;
  HandlerStatus status;
};

class PreferencesTest : public BackupsTest, protected PersonAtWindow {
 protected:
  PreferencesTest() : PersonAtWindow(runtime_) {
    defaults().registerDefaults({{"backupPath", PropertyList(library())}});
  }

  static QWUserDefaults& defaults() { return QWUserDefaults::standardUserDefaults(); }
  // A backup as far as its folder goes; it holds its own name.
  static void makeBackup(const std::string& path) { writeFile(path + "/Settings.plist", path); }
  static bool isBackup(const std::string& path) { return exists(path + "/Settings.plist"); }

  FakePreferenceView view_;
  FakeFileChooser chooser_;
  QWPreferenceController settings_{{view_, chooser_}};
  const std::string question_ = "Would you like to move your backups to the new backup location?";
};

TEST_F(PreferencesTest, MovesTheLibraryAndNothingElse) {
  for (const char* name : {"Capitals.VNT", "Older.vnt2", "Twice.vnt", "Autosaves/Auto Backup 1.vnt"})
    makeBackup(inLibrary(name));
  writeFile(inLibrary("notes.txt"), "mine");
  const std::string folder = home_ / "New/Backups";
  writeFile(folder + "/Twice.vnt/Settings.plist", "another");

  chooser_.answer = {folder};
  settings_.browse();
  EXPECT_TRUE(chooser_.request.folders);
  EXPECT_THAT(alerts_, ElementsAre(question_));
  EXPECT_TRUE(isBackup(folder + "/Capitals.VNT"));
  EXPECT_TRUE(isBackup(folder + "/Older.vnt")) << "renamed when it was listed";
  EXPECT_TRUE(isBackup(folder + "/Autosaves/Auto Backup 1.vnt"));
  EXPECT_TRUE(exists(inLibrary("notes.txt")));
  EXPECT_EQ(files_.calls(Operation::Sync), 1) << "a setting on the disk names backups that are there";
  EXPECT_EQ(readFile(folder + "/Twice.vnt/Settings.plist"), "another");
  EXPECT_EQ(readFile(inLibrary("Twice.vnt/Settings.plist")), inLibrary("Twice.vnt")) << "its name was taken";
  EXPECT_THAT(view_.remark, HasSubstr("still in " + library() + ": 1"));
  EXPECT_EQ(defaults().stringForKey("backupPath"), folder);
  EXPECT_EQ(controller().backupArray().size(), 4U);

  settings_.setBackupPath(folder + "/");
  EXPECT_EQ(alerts_.size(), 1U) << "the same folder again";
}

TEST_F(PreferencesTest, AsksNothingWhereThereIsNothingToMove) {
  makeFolders(inLibrary("Autosaves"));
  settings_.setBackupPath(home_ / "Elsewhere");
  EXPECT_TRUE(exists(home_ / "Elsewhere"));
  ASSERT_EQ(symlink((home_ / "Elsewhere").c_str(), (home_ / "link").c_str()), 0);
  makeBackup(home_ / "Elsewhere/Mine.vnt");
  settings_.setBackupPath(home_ / "link");
  EXPECT_THAT(alerts_, IsEmpty()) << "another name for the same folder";
  answer_ = QWAlert::Alternate;
  settings_.setBackupPath(home_ / "Third");
  EXPECT_THAT(alerts_, ElementsAre(question_));
  EXPECT_TRUE(isBackup(home_ / "Elsewhere/Mine.vnt"));
  EXPECT_EQ(controller().backupArray().size(), 1U);
}

TEST_F(PreferencesTest, LosesNoBackupWhereTheNewFolderIsOdd) {
  makeBackup(inLibrary("Mine.vnt"));
  makeBackup(inLibrary("Autosaves/Auto Backup 1.vnt"));
  writeFile(home_ / "file", "");
  settings_.modifyBackupPath(home_ / "file/below");
  EXPECT_TRUE(isBackup(inLibrary("Mine.vnt")) && isBackup(inLibrary("Autosaves/Auto Backup 1.vnt")));
  EXPECT_EQ(defaults().stringForKey("backupPath"), home_ / "file/below");
  EXPECT_THAT(view_.remark, HasSubstr(": 2"));

  EXPECT_TRUE(defaults().setObject("backupPath", library()));
  settings_.setBackupPath(inLibrary("Autosaves"));
  EXPECT_TRUE(isBackup(inLibrary("Autosaves/Mine.vnt"))) << "named backups are never among automatic ones";
  EXPECT_TRUE(isBackup(inLibrary("Autosaves/Autosaves/Auto Backup 1.vnt")));

  alerts_.clear();
  for (const std::string& bad :
       {std::string("Backups"), std::string(), home_ / "a*b", inLibrary("Autosaves/Mine.vnt"), home_ / "file"})
    settings_.setBackupPath(bad);
  EXPECT_EQ(alerts_, std::vector<std::string>(5, "Your backups cannot be kept there."));
  EXPECT_EQ(defaults().stringForKey("backupPath"), inLibrary("Autosaves"));
  EXPECT_EQ(view_.path, inLibrary("Autosaves")) << "what counts is shown again";
}

TEST_F(PreferencesTest, OverlooksNoLibrary) {
  makeBackup(inLibrary("Mine.vnt"));
  files_.fail(Operation::List, std::errc::permission_denied, FaultyFileSystem::kEveryCall);
  settings_.setBackupPath(home_ / "New");
  EXPECT_THAT(alerts_, ElementsAre(question_));
  EXPECT_THAT(view_.remark, HasSubstr(library()));
  EXPECT_TRUE(isBackup(inLibrary("Mine.vnt")));
  files_.heal();

  EXPECT_TRUE(defaults().setObject("backupPath", "Backups"));
  settings_.refresh();
  EXPECT_EQ(view_.remark, "That is no whole path. Your backups are in " + library() + ".");
  controller().populateBackups();
  EXPECT_THAT(logged(), Contains(HasSubstr("The setting backupPath is no whole path: Backups.")));
  EXPECT_TRUE(defaults().setObject("backupPath", "~/Mine"));
  EXPECT_EQ(QWDataController::vantoryBackupLocation(), home_ / "Mine");

  EXPECT_TRUE(defaults().setObject("backupPath", PropertyList(5)));
  settings_.setBackupPath(home_ / "New");
  EXPECT_EQ(alerts_.size(), 2U) << "what is stored was no path";
  EXPECT_TRUE(isBackup(home_ / "New/Mine.vnt"));
}

TEST_F(PreferencesTest, KeepsOutOfTheWayOfWhoeverWorksInTheLibrary) {
  makeBackup(inLibrary("Mine.vnt"));
  std::promise<void> end;
  BackgroundThreads::shared().start([&end] { end.get_future().wait(); });
  settings_.setBackupPath(home_ / "New");
  EXPECT_THAT(alerts_, ElementsAre("A task is still running."));
  EXPECT_EQ(defaults().stringForKey("backupPath"), library());
  end.set_value();
  finishWork();
  makeFolders(home_ / "New");
  const auto writer = disk_.holdFolder(inLibrary("Mine.vnt"), std::chrono::seconds(0));
  ASSERT_TRUE(writer);
  EXPECT_EQ(moveLibrary(library(), home_ / "New").count(FileReport::Outcome::Failed, FileAction::Move), 1U)
      << "another process writes it";
  EXPECT_TRUE(isBackup(inLibrary("Mine.vnt")));
}

TEST_F(PreferencesTest, TellsWhatDidNotComeAlongToAnotherDisk) {
  const std::string other = "/dev/shm/vantory-library-" + std::to_string(getpid());
  const std::string large(60'000, 'x');
  makeBackup(other + "/Marked.vnt");
  makeBackup(other + "/Piped.vnt");
  ASSERT_EQ(mkfifo((other + "/Piped.vnt/pipe").c_str(), 0600), 0);
  const auto holds = [&](const std::string& path) {
    return setxattr(path.c_str(), "user.large", large.data(), large.size(), 0) == 0;
  };
  const bool isTooLarge = holds(other + "/Marked.vnt") && !holds(home_.path());
  ASSERT_TRUE(defaults().setObject("backupPath", other));
  settings_.modifyBackupPath(home_ / "New");
  EXPECT_TRUE(isBackup(home_ / "New/Marked.vnt"));
  EXPECT_TRUE(isBackup(other + "/Piped.vnt")) << "whole, or not at all";
  EXPECT_FALSE(exists(home_ / "New/Piped.vnt") || exists(other + "/Marked.vnt"));
  EXPECT_THAT(view_.remark,
              AllOf(HasSubstr(other + ": 1"), HasSubstr("pipe: "), HasSubstr(isTooLarge ? "user.large" : "")));
  std::filesystem::remove_all(other);
}

TEST_F(PreferencesTest, AsksForAPasswordBeforeItGivesTheRequirementUp) {
  fakes_.privileged.grants = false;
  settings_.prefsToggleAdminPass(false);
  EXPECT_EQ(view_.values["requireAdminPassword"], 1);
  EXPECT_THAT(fakes_.privileged.calls, IsEmpty());
  settings_.prefsToggleAdminPass(true);
  EXPECT_EQ(view_.values["requireAdminPassword"], 0);
  EXPECT_EQ(fakes_.privileged.requests, 2) << "asked again after a refusal";
  fakes_.privileged.grants = true;
  for (const bool required : {true, false}) {
    settings_.prefsToggleAdminPass(required);
    EXPECT_EQ(fakes_.privileged.calls.back().arguments.back(), required ? "1" : "0");
  }
}

TEST_F(PreferencesTest, TheScheduleFollowsAtOnceAndAFailureIsShown) {
  settings_.changeValue("periodicAutosave", 1);
  settings_.changeValue("autosaveFrequency", 3);
  finishWork();
  EXPECT_EQ(fakes_.jobs.loaded.back().interval, std::chrono::hours(72));
  settings_.changeValue("periodicAutosave", 0);
  finishWork();
  EXPECT_FALSE(exists(home_ / "Library/LaunchAgents/com.quarrywell.VantoryAutoSave.plist"));
  files_.refuseWrites();
  settings_.changeValue("maxAutoBackups", 3);
  EXPECT_THAT(alerts_, ElementsAre("The setting could not be saved."));
  EXPECT_THAT(informative_, HasSubstr("Read-only file system"));
  EXPECT_EQ(view_.values["maxAutoBackups"], 0);
}

TEST_F(PreferencesTest, HandlesProjectsOnlyWithAllEightKinds) {
  using Colour = HandlerStatus::Colour;
  const auto expectStatus = [this](const std::string& text, Colour colour, bool keystroke) {
    settings_.refresh();
    EXPECT_EQ(std::tuple(view_.status.text, view_.status.colour, view_.status.keystrokeEnabled),
              std::tuple(text, colour, keystroke));
  };
  auto& viewers = fakes_.defaultHandlers.viewers;
  expectStatus("Status: Vantory is NOT the default handler", Colour::Red, false);
  EXPECT_EQ(view_.status.note, "No other application is installed for these projects.");
  settings_.changeHandlerToFCS();
  EXPECT_EQ(viewers["type/stmp"], "com.apple.soundtrackpro");
  settings_.changeHandlerToVantory();
  EXPECT_EQ(viewers.size(), 8U);
  for (auto& [type, viewer] : viewers) {
    expectStatus("Status: Vantory is the default handler", Colour::DarkGreen, true);
    const std::string kept = std::exchange(viewer, "com.quarrywell.Vantory");
    expectStatus("Status: Vantory is NOT the default handler", Colour::Red, false);
    viewer = kept;
  }
}

}  // namespace
}  // namespace vantory::test
