#include <sys/stat.h>

#include "backups/ui/Controls.h"
#include "backups/ui/Surveyor.h"
#include "services/RunningApplicationGuard.h"
#include "services/log/QWLog.h"
#include "services/settings/QWUserDefaults.h"
#include "services/threads/BackgroundThreads.h"
#include "tasks/ui/AppWindowController.h"
#include "tasks/ui/QWLockOutlineController.h"
#include "tests/backups/ui/PaneTest.h"
#include "tests/tasks/ui/FakeMainWindow.h"

namespace vantory::test {
namespace {

class FakeGuard : public RunningApplicationGuard {
 public:
  GuardDecision checkRunningAppsForName(const std::string&, const std::string& bundleID, bool) override {
    if (onAsked) onAsked();
    return decisions.contains(bundleID) ? decisions[bundleID] : GuardDecision::NotRunning;
  }
  bool closeAppWithName(const std::string&, const std::string&, const std::function<bool()>& isCancelled) override {
    if (onClose) onClose();
    return closes && !isCancelled();
  }

  std::map<std::string, GuardDecision> decisions;
  bool closes = true;
  std::function<void()> onAsked;
  std::function<void()> onClose;
};

class TrashWorkflowTest : public PaneTest {
 protected:
  TrashWorkflowTest() {
    setTwoApps();
    runtime_.guard = &guard_;
    QWUserDefaults::standardUserDefaults().registerDefaults({{"maxAutoBackups", PropertyList(10)}});
  }
  std::vector<std::string> runAndReadLog() {
    controller_.trash();
    finishWork();
    return logged();
  }

  FakeGuard guard_;
  FakeMainWindow window_;
  FakeProgressSheet sheet_;
  FakeBusyIndicator lockSpinner_;
  QWLockOutlineController lock_{outline_, lockSpinner_};
  AppWindowController controller_{{window_, spinner_, sheet_, lock_}};
};

TEST_F(TrashWorkflowTest, ARunningApplicationIsClosedAndRelaunchedOrSkipped) {
  guard_.decisions = {{"com.example.Editor", GuardDecision::Skip},
                      {"com.example.Avid", GuardDecision::CloseAndRelaunch}};
  EXPECT_THAT(runAndReadLog(), testing::IsSupersetOf({"User chose to skip app", "User chose to close and relaunch app",
                                                      "Application closed successfully", "Total trashed files: 2"}));
  EXPECT_THAT(sheet_.labels, testing::IsSupersetOf({testing::StartsWith("Trashing preferences... Waiting for "),
                                                    testing::StartsWith("Relaunching")}));
  EXPECT_EQ(std::ranges::count(sheet_.labels, "Trashing preferences..."), 2) << "before and after the waiting";
  EXPECT_TRUE(exists(prefs("editor.plist")));
  EXPECT_THAT(fakes_.workspace.launched, ElementsAre("com.example.Avid"));
  EXPECT_EQ(sheet_.maximum, 0) << "relaunching has no measure";

  guard_.closes = false;
  EXPECT_THAT(runAndReadLog(), testing::Contains("Unable to close application"));
}

TEST_F(TrashWorkflowTest, BacksUpAllThereIsWhereAsked) {
  TaskReport report;
  EXPECT_EQ(controller_.autoBackup(report), WriteResult::Success);
  EXPECT_THAT(logged(), testing::Contains("Creating auto backup..."));
  ASSERT_EQ(QWDataController::sharedController().autoBackupArray().size(), 1U);
  EXPECT_EQ(QWDataController::sharedController().autoBackupArray()[0]->children().size(), 2U);
}

TEST_F(TrashWorkflowTest, ACancelEndsItBeforeTheNextApplicationAndLeavesNoSheet) {
  const auto onSheet = [this] { controller_.progressController().cancel(); };
  for (const std::function<void()>& cancel : {std::function<void()>(onSheet), {}}) {
    writeFile(prefs("editor.plist"), "preferences");
    guard_.onAsked = cancel;
    if (!cancel) guard_.decisions = {{"com.example.Avid", GuardDecision::Cancel}};
    const auto lines = runAndReadLog();
    EXPECT_FALSE(exists(prefs("editor.plist"))) << "what came before stays trashed";
    ASSERT_TRUE(Surveyor::shared().survey());
    EXPECT_EQ(Surveyor::shared().survey()->ofPreferences(*editor_).files, 0U) << "which the panes tell";
    EXPECT_TRUE(exists(avidFile("anna")));
    EXPECT_EQ(lines.back(), "User cancelled trash task");
    EXPECT_THAT(alerts_, IsEmpty());
    EXPECT_FALSE(sheet_.isShown);
  }
  guard_.onAsked = nullptr;
  guard_.decisions.clear();
  runAndReadLog();
  EXPECT_FALSE(exists(avidFile("anna"))) << "an earlier cancel is forgotten";
  int asked = 0;
  guard_.onAsked = [&] {
    if (++asked == 2) onSheet();
  };
  EXPECT_EQ(runAndReadLog().back(), "User cancelled trash task") << "during the last application, too";

  writeFile(prefs("editor.plist"), "preferences");
  guard_.decisions = {{"com.example.Editor", GuardDecision::CloseAndRelaunch}};
  guard_.onAsked = nullptr;
  guard_.onClose = onSheet;
  EXPECT_EQ(runAndReadLog().back(), "User cancelled trash task") << "while an application takes its time to quit";
  EXPECT_TRUE(exists(prefs("editor.plist")));
}

TEST_F(TrashWorkflowTest, WaitsForTheTaskThatRuns) {
  SerialWork::tasks().add([] {
    for (int i = 0; i < 100; ++i) MainThread::shared().runAndWait([] {});
    QWLog::appendLog("The task before has ended");
  });
  controller_.trash();
  EXPECT_TRUE(spinner_.isTurning);
  finishWork();
  EXPECT_EQ(sheet_.value, 2);
  controller_.progressController().setMaxProgress(9);
  EXPECT_EQ(sheet_.value, 2) << "the maximum alone";
  const auto lines = logged();
  EXPECT_LT(std::ranges::find(lines, "The task before has ended"), std::ranges::find(lines, "Trashing preferences..."));
  EXPECT_FALSE(exists(prefs("editor.plist")));
  EXPECT_TRUE(exists(prefs("editor.layout"))) << "no preferences proper";
}

TEST_F(TrashWorkflowTest, BacksUpTrashesPreferencesOnlyAndRestoresTheDefaultBackupWhereWanted) {
  ASSERT_EQ(backupOfAll("Good")->writeData(report_), WriteResult::Success);
  EXPECT_TRUE(QWUserDefaults::standardUserDefaults().setObject("autoRestoreDefault", PropertyList(1)));
  EXPECT_TRUE(QWUserDefaults::standardUserDefaults().setObject("defaultBackup", PropertyList("Good.vnt")));
  controller().populateBackups();
  writeFile(prefs("editor.plist"), "broken");
  EXPECT_THAT(runAndReadLog(), testing::IsSupersetOf({"Total trashed files: 3", "Relaunching applications...",
                                                      "Finding default backup to restore..."}));
  EXPECT_EQ(readFile(inTrash("editor.plist")), "broken");
  EXPECT_EQ(readFile(prefs("editor.plist")), "preferences");
  EXPECT_FALSE(controller().autoBackupArray().empty());
  EXPECT_THAT(alerts_, ElementsAre("Preferences successfully trashed"));
  EXPECT_THAT(sheet_.labels, ElementsAre("Backing up...", "Trashing preferences...", "Restoring default backup..."));
  EXPECT_FALSE(sheet_.isShown || spinner_.isTurning || sheet_.mayCancel);

  const std::string copy = inLibrary("Good.vnt/Users/user/Library/Preferences/editor.plist");
  ASSERT_TRUE(disk_.remove(copy));
  ASSERT_EQ(mkfifo(copy.c_str(), 0600), 0);
  alerts_.clear();
  runAndReadLog();
  EXPECT_THAT(alerts_, ElementsAre("The default backup could not be restored as a whole"));
  EXPECT_THAT(informative_, testing::StartsWith("3 files went to the Trash."));

  ASSERT_TRUE(disk_.remove(inLibrary("Good.vnt")));
  writeFile(prefs("editor.plist"), "broken again");
  runAndReadLog();
  EXPECT_EQ(alerts_.back(), "Preferences successfully trashed");
  EXPECT_THAT(informative_, HasSubstr("The default backup, \"Good\", is not in the library any more."));
}

TEST_F(TrashWorkflowTest, AsksForRightsOnceATask) {
  files_.fail(Operation::Trash, std::errc::permission_denied, FaultyFileSystem::kEveryCall);
  fakes_.privileged.grants = false;
  for (const int task : {1, 2}) {
    controller_.trash();
    finishWork();
    EXPECT_EQ(fakes_.privileged.requests, task) << "three files could not be trashed";
  }
  EXPECT_THAT(alerts_, ElementsAre("Nothing was trashed", "Nothing was trashed"));
  EXPECT_THAT(informative_, HasSubstr(prefs("editor.plist") + " not trashed: Permission denied. Whoever owns it"));
  onAlert_ = [this](const AlertTexts& texts) {
    files_.heal();
    return texts.alternateButton == "Try Again" ? QWAlert::Alternate : QWAlert::Default;
  };
  controller_.trash();
  finishWork();
  EXPECT_EQ(alerts_.back(), "Preferences successfully trashed") << "tried again";
}

TEST_F(TrashWorkflowTest, TheFirstStartMakesABackupOfEverything) {
  const auto start = [this] {
    controller_.load();
    finishWork();
  };
  ASSERT_TRUE(disk_.remove(machine_ / "Users"));
  start();
  EXPECT_THAT(window_.shown, ElementsAre(Pane::Trash));
  EXPECT_FALSE(exists(inLibrary("anna.vnt"))) << "none of the built-in catalog's files are there, and nothing is left";

  writeFile(prefs("com.apple.FinalCutPro.plist"), "x");
  start();
  EXPECT_TRUE(exists(inLibrary("anna.vnt/Settings.plist")));
  start();
  EXPECT_EQ(controller().backupArray().size(), 2U) << "a second start finds it";

  files_.fail(Operation::List, std::errc::permission_denied, FaultyFileSystem::kEveryCall);
  start();
  EXPECT_THAT(alerts_, ElementsAre("Your backups cannot be read"));
}

TEST_F(TrashWorkflowTest, WarnsAboveThePanesWhileScheduledBackupsDoNotHappen) {
  for (const char* key : {"periodicAutosave", "autosaveFrequency"})
    EXPECT_TRUE(QWUserDefaults::standardUserDefaults().setObject(key, PropertyList(1)));
  fakes_.jobs.stamp = Timestamp{fakes_.clock.now().seconds - 864000};
  controller().populateBackups();
  EXPECT_EQ(window_.warning.rfind("Scheduled backups do not happen: there is no complete one.", 0), 0U)
      << window_.warning;
  TaskReport report;
  EXPECT_EQ(controller_.autoBackup(report), WriteResult::Success);
  EXPECT_EQ(window_.warning, "");
}

}  // namespace
}  // namespace vantory::test
