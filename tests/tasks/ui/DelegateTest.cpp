#include "tasks/ui/Vantory_AppDelegate.h"

#include <algorithm>
#include <atomic>
#include <thread>

#include "services/log/QWLog.h"
#include "services/receipts/ReceiptFolder.h"
#include "services/settings/QWUserDefaults.h"
#include "tasks/ui/DocumentPaths.h"
#include "tests/backups/ui/PaneTest.h"
#include "tests/tasks/ui/FakeMainWindow.h"

namespace vantory::test {
namespace {

using testing::Contains;
using testing::Not;

constexpr const char* kProject = "/films/Cut.FCP";
constexpr const char* kKeystroke = "Sending prefs keyboard shortcut to Final Cut Pro";

class DelegateTest : public PaneTest {
 protected:
  DelegateTest() {
    setSmallCatalog("good");
    fakes_.workspace.paths["com.apple.FinalCutPro"] = "/share/com.apple.FinalCutPro.desktop";
    EXPECT_TRUE(QWUserDefaults::standardUserDefaults().setObject("showSysSettingsDialog", PropertyList(1)));
  }

  std::shared_ptr<QWBackup> writeBackup(const std::string& name, const std::vector<std::string>& projects) {
    auto backup = backupOfAll(name);
    backup->setProjects(projects);
    EXPECT_EQ(backup->writeData(report_), WriteResult::Success);
    return backup;
  }
  // Opens the file and waits for all that comes of it; answers the log.
  std::vector<std::string> open(const std::string& path) {
    logged();
    delegate_.openFiles({path});
    finishWork();
    return logged();
  }
  std::int64_t secondsFor(const std::function<void()>& work) {
    const Timestamp start = fakes_.clock.now();
    work();
    return fakes_.clock.now().seconds - start.seconds;
  }

  FakeMainWindow window_;
  FakeFileChooser chooser_;
  int quits_ = 0;
  std::string selected_;
  Vantory_AppDelegate delegate_{{window_, *this, chooser_, button_, [this] { ++quits_; }, [] {},
                                 [](std::function<void()> work) { BackgroundThreads::shared().start(std::move(work)); },
                                 [this](const std::string& path) { selected_ = path; }}};
};

TEST_F(DelegateTest, AProjectBringsTheBackupItIsLinkedToOrElseFinalCutProsSettings) {
  EXPECT_EQ(secondsFor([&] { EXPECT_THAT(open(kProject), Contains(kKeystroke)); }), 8) << "it has to start first";
  fakes_.workspace.running = {"com.apple.FinalCutPro"};
  EXPECT_EQ(secondsFor([&] { open(kProject); }), 2);
  EXPECT_EQ(fakes_.workspace.scripts.size(), 2u);
  fakes_.workspace.paths["com.apple.motion"] = "/Applications/Motion.app";
  EXPECT_THAT(open("/films/title.motn"), Not(Contains(kKeystroke)));
  EXPECT_EQ(fakes_.workspace.activated.back(), "com.apple.motion") << "whatever its file is called";

  writeBackup("For another", {"/films/cut.fcp"});
  writeBackup("For the film", {"/films/other.fcp", kProject});
  const auto lines = open(kProject);
  EXPECT_THAT(lines, Contains("Restoring backup For the film, which the project is linked to"));
  EXPECT_THAT(lines, Not(Contains(kKeystroke))) << "the restored settings are not to be changed";
  EXPECT_EQ(fakes_.notifications.posted.front().title, "Restoring preferences...");
  EXPECT_EQ(fakes_.workspace.activated.back(), "com.apple.FinalCutPro");
  EXPECT_EQ(quits_, 4);
  EXPECT_FALSE(delegate_.applicationShouldTerminateAfterLastWindowClosed());

  fakes_.documents.answer = Error{std::errc::no_such_file_or_directory, "no application"};
  open("/films/notes.txt");
  EXPECT_THAT(alerts_, ElementsAre("Vantory cannot open \"notes.txt\""));
}

TEST_F(DelegateTest, ALibraryOutOfReachIsToldBeforeAProjectOpensWithoutItsBackup) {
  const std::string failure = "The backups could not be looked through for this project";
  open(kProject);
  EXPECT_THAT(alerts_, ElementsAre()) << "the usual library is made with its first backup";
  EXPECT_TRUE(QWUserDefaults::standardUserDefaults().setObject("backupPath", machine_ / "volume/Backups"));
  open(kProject);
  EXPECT_THAT(alerts_, ElementsAre(failure));
  EXPECT_THAT(informative_, HasSubstr("volume/Backups, is not there"));
  files_.fail(test::Operation::List, std::errc::io_error, FaultyFileSystem::kEveryCall);
  open(kProject);
  files_.heal();
  EXPECT_THAT(alerts_, ElementsAre(failure, failure));
  EXPECT_THAT(informative_, HasSubstr("Input/output error"));
  EXPECT_EQ(fakes_.workspace.opened.size(), 3U) << "as it would without one";
}

TEST_F(DelegateTest, ABackupIsImportedAfterAQuestion) {
  const std::string elsewhere = home_ / "Films/Clean setup.vnt";
  std::filesystem::create_directories(home_ / "Films");
  std::filesystem::rename(writeBackup("Clean setup", {})->path(), elsewhere);
  writeFile(prefs("editor.plist"), "spoilt");
  chooser_.answer = {elsewhere};
  for (const auto& [answer, content] : {std::pair{QWAlert::Alternate, "spoilt"}, {QWAlert::Default, "good"}}) {
    EXPECT_FALSE(exists(inLibrary("Clean setup.vnt")));
    answer_ = answer;
    delegate_.importBackup();
    finishWork();
    EXPECT_EQ(readFile(prefs("editor.plist")), content);
  }
  answer_ = QWAlert::Other;
  writeFile(prefs("editor.plist"), "spoilt");
  delegate_.importBackup();
  finishWork();
  EXPECT_EQ(readFile(prefs("editor.plist")), "spoilt") << "added without being restored";
  EXPECT_EQ(selected_, inLibrary("Clean setup-2.vnt")) << "beside the one of that name";
  EXPECT_TRUE(exists(selected_ + "/Settings.plist"));
  EXPECT_EQ(receiptNames()->size(), 2U) << "both can be taken back";
  EXPECT_TRUE(chooser_.request.folders);
  const std::string question = "Are you sure you wish to restore the backup \"Clean setup\"?";
  EXPECT_THAT(alerts_, ElementsAre(question, question, "Restoration complete", question,
                                   "\"Clean setup\" is kept as \"Clean setup-2\"."));
  EXPECT_THAT(shownPanes_, ElementsAre("Restore", "Restore", "Restore"));
  EXPECT_EQ(window_.timesInFront, 3);
  EXPECT_EQ(quits_, 0);
}

TEST_F(DelegateTest, TheAlertsTellWhatAnImportLeftUndone) {
  // No folder, nothing in it, and a folder of another kind.
  writeFile(home_ / "file.vnt", "x");
  makeFolders(home_ / "empty.vnt");
  for (const char* name : {"file", "empty"}) {
    open(home_ / (std::string(name) + ".vnt"));
    EXPECT_EQ(alerts_.back(), formatted("The backup \"%@\" could not be restored", name));
  }
  EXPECT_FALSE(exists(inLibrary("file.vnt")));
  answer_ = QWAlert::Alternate;
  open(home_ / "empty.vnt");
  EXPECT_THAT(informative_, HasSubstr("\"empty\" is incomplete"));
  EXPECT_THAT(informative_, HasSubstr("in your library goes to the Trash")) << "it was imported before";
  answer_ = QWAlert::Default;
  chooser_.answer = {home_ / "Films"};
  delegate_.importBackup();
  EXPECT_EQ(alerts_.back(), "\"Films\" is not a backup");

  std::filesystem::rename(writeBackup("Clean", {})->path(), home_ / "Auto Backup of mine.vnt");
  open(home_ / "Auto Backup of mine.vnt");
  EXPECT_THAT(informative_, HasSubstr("automatic backup"));
  EXPECT_TRUE(exists(inLibrary("Autosaves/Auto Backup of mine.vnt")));

  const auto backup = writeBackup("Clean", {kProject});
  for (const std::string& opened : {backup->path(), std::string(kProject)}) {
    alerts_.clear();
    files_.fail(test::Operation::StageCopy, std::errc::io_error, FaultyFileSystem::kEveryCall);
    open(opened);
    EXPECT_EQ(alerts_.back(),
              opened == kProject ? "Nothing was restored" : "The backup \"Clean\" could not be restored");
    EXPECT_THAT(informative_, HasSubstr("editor.plist: Input/output error"));
    EXPECT_EQ(informative_.find("Your preferences are as they were.") == std::string::npos, opened == kProject);
    files_.heal();
  }
  for (const auto operation : {test::Operation::Commit, test::Operation::Move})
    files_.fail(operation, std::errc::io_error, FaultyFileSystem::kEveryCall);
  open(backup->path());
  files_.heal();
  EXPECT_THAT(informative_, HasSubstr("lies in the Trash: " + inTrash("editor.plist")));
  EXPECT_THAT(informative_, Not(HasSubstr("Your preferences are as they were.")));
}

TEST_F(DelegateTest, DocumentsAndTheEndWaitForRunningWork) {
  std::atomic<bool> go = false;
  const auto task = [&go] {
    while (!go) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  };
  BackgroundThreads::shared().start(task);
  delegate_.openFiles({kProject, home_ / "empty.vnt"});
  MainThread::shared().runPending();
  EXPECT_THAT(logged(), Not(Contains(testing::StartsWith("User opened"))));
  // Another task begins while the second file's question is on the screen.
  onAlert_ = [&](const AlertTexts&) {
    EXPECT_EQ(fakes_.workspace.opened.size(), 1U) << "one after the other";
    go = false;
    BackgroundThreads::shared().start(task);
    MainThread::shared().runPending();
    EXPECT_EQ(quits_, 0);
    go = true;
    return QWAlert::Alternate;
  };
  go = true;
  finishWork();
  EXPECT_EQ(alerts_.size(), 1U);
  EXPECT_EQ(quits_, 1);
}

TEST_F(DelegateTest, AProjectTakesItsTurnWithTheTasks) {
  SerialWork::tasks().add([this] {
    MainThread::shared().runAndWait([this] { delegate_.openFile(kProject); });
    for (int i = 0; i < 100; ++i) MainThread::shared().runAndWait([] {});
    QWLog::appendLog("The task before has ended");
  });
  finishWork();
  const auto lines = logged();
  EXPECT_LT(std::ranges::find(lines, "The task before has ended"), std::ranges::find(lines, "Populating backups..."));
  EXPECT_EQ(fakes_.workspace.opened.size(), 1U);
  EXPECT_EQ(quits_, 1);
}

TEST_F(DelegateTest, StartsOnlyWithAnAdministratorWhereOneIsRequired) {
  EXPECT_TRUE(delegate_.awakeFromNib());
  EXPECT_TRUE(QWUserDefaults::standardUserDefaults().setObject("requireAdminPassword", PropertyList(1)));
  fakes_.privileged.grants = false;
  EXPECT_FALSE(delegate_.awakeFromNib());
  fakes_.privileged.grants = true;
  EXPECT_TRUE(delegate_.awakeFromNib());
}

TEST_F(DelegateTest, TheStartSetsUpWhatIsSwitchedOn) {
  const auto start = [this] {
    delegate_.applicationDidFinishLaunching();
    finishWork();
    return logged();
  };
  const char* missing = "Unable to launch Software Update - path doesn't exist";
  EXPECT_THAT(start(), Not(Contains(missing)));
  EXPECT_EQ(fakes_.jobs.loaded.size(), 1U);
  writeFile(prefs("com.quarrywell.global.plist"), "<plist><dict><key>SUCheckAtStartup</key><true/></dict></plist>");
  EXPECT_THAT(start(), Contains(missing));
}

TEST(DocumentPathsTest, FindsPathsAndAddressesAmongArguments) {
  EXPECT_THAT(
      documentPaths({"-psn_0_1", "a.fcp", "./b//c.vnt/", "../d.fcp", "/e f.fcp", "file:///g%20%ff.fcp",
                     "FILE://localhost/h", "file:/i", "file:j", "file:///%00", "file:///%zz", "", "--", "-k.fcp"},
                    "/home/anna"),
      ElementsAre("/home/anna/a.fcp", "/home/anna/b/c.vnt", "/home/d.fcp", "/e f.fcp", "/g \xff.fcp", "/h", "/i",
                  "/home/anna/file:j", "/home/anna/file:/%00", "/home/anna/file:/%zz", "/home/anna/-k.fcp"));
}

TEST_F(DelegateTest, HelpOpensPagesAndTheManualWhereThereIsOne) {
  fakes_.system.resources = home_.path();
  EXPECT_FALSE(delegate_.hasUserManual());
  writeFile(home_ / "Vantory User Manual.pdf", "%PDF");
  delegate_.helpReportBug();
  finishWork();
  delegate_.helpUserManual();
  finishWork();
  EXPECT_THAT(fakes_.documents.opened,
              ElementsAre("https://www.quarrywell.com/support/bug/?app=vantory&version=" VANTORY_VERSION,
                          home_ / "Vantory User Manual.pdf"));
}

}  // namespace
}  // namespace vantory::test
