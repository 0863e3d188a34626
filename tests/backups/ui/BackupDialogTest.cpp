#include "backups/ui/BackupDialogView.h"
#include "backups/ui/QWBackupEditController.h"
#include "backups/ui/QWBackupOutlineController.h"
#include "backups/ui/QWRestoreOutlineController.h"
#include "backups/ui/Surveyor.h"
#include "tests/backups/ui/PaneTest.h"

namespace vantory::test {
namespace {

class FakeDialog : public BackupDialogView {
 public:
  void show(const std::string& title) override {
    confirmTitle = title;
    isShown = true;
  }
  void close() override { isShown = false; }
  std::string name() const override { return nameText; }
  void setName(const std::string& name) override { nameText = name; }
  void setRemark(const std::string&) override {}
  void setKeptName(const std::string& text) override { keptName = text; }
  void setContents(const std::string& text) override { contents = text; }
  void setProjects(const std::vector<std::string>& list) override { projects = list; }
  std::vector<std::size_t> selectedProjects() const override { return selection; }
  void setProjectListShown(bool shown) override { showsProjects = shown; }
  void setHandlingNoticeShown(bool shown) override { showsNotice = shown; }

  std::string confirmTitle;
  std::string nameText;
  std::string keptName;
  std::string contents;
  std::vector<std::string> projects;
  std::vector<std::size_t> selection;
  bool isShown = false;
  bool showsProjects = true;
  bool showsNotice = false;
};

class BackupDialogTest : public PaneTest {
 protected:
  BackupDialogTest() { setTwoApps(); }
  void confirm(const std::string& name) {
    dialog_.nameText = name;
    edit_.backup();
    finishWork();
  }

  FakeDialog dialog_;
  FakeFileChooser chooser_;
  FakeOutline restoreOutline_;
  bool handles_ = false;
  bool accepts_ = false;  // whether the desktop lets the program open projects
  QWRestoreOutlineController restore_{{restoreOutline_, button_, spinner_, *this}};
  QWBackupOutlineController pane_{{outline_, button_, spinner_, *this, restore_}};
  QWBackupEditController edit_{
      {dialog_, chooser_, pane_, restore_, [this] { return handles_; }, [this] { return handles_ = accepts_; }}};
};

TEST_F(BackupDialogTest, ANewBackupHoldsWhatIsTicked) {
  editor_->children()[1]->setSelected(Off);
  editor_->updateSelectionStatus();
  avidItem_->users()[0]->setSelected(Off);
  avid_->updateSelectionStatus();
  Surveyor::shared().renew();
  finishWork();
  dialog_.nameText = " a/b:c ";
  edit_.showBackupDialog();
  EXPECT_EQ(dialog_.keptName, "\" a/b:c \" is kept as \"abc\".");
  EXPECT_EQ(dialog_.contents, "The backup will hold 2 items of 2 applications, 14 B.");
  dialog_.nameText = " blanks around ";
  edit_.nameDidChange();
  EXPECT_EQ(dialog_.keptName, "");
  dialog_.nameText = "";
  edit_.showBackupDialog();
  EXPECT_EQ(dialog_.confirmTitle, "Backup");
  EXPECT_EQ(dialog_.nameText, "anna");
  EXPECT_FALSE(dialog_.showsProjects);
  confirm(" My:Backup ");
  EXPECT_FALSE(dialog_.isShown);
  const auto backup = listed("MyBackup");
  ASSERT_TRUE(backup);
  ASSERT_EQ(backup->children().size(), 2U);
  EXPECT_EQ(backup->children()[0]->children().size(), 1U);
  const std::string avidFolder = inLibrary("MyBackup.vnt");
  EXPECT_FALSE(exists(avidFolder + QWBackup::safeUserPath(avidFile("anna"))));
  EXPECT_TRUE(exists(avidFolder + QWBackup::safeUserPath(avidFile("ben"))));
  EXPECT_EQ(editor_->selected(), Mixed) << "the pane keeps its ticks";
  EXPECT_THAT(shownPanes_, ElementsAre("Restore"));
  EXPECT_EQ(rowAs<QWBackup>(restoreOutline_.selected), backup);
}

TEST_F(BackupDialogTest, ABadNameLeavesTheDialogOpen) {
  edit_.showBackupDialog();
  confirm(" /:");
  confirm("Auto Backup of mine");
  fakes_.users.process.reset();
  confirm(" ");
  confirm("Good");
  EXPECT_TRUE(dialog_.isShown);
  EXPECT_THAT(alerts_,
              ElementsAre("You must enter a name for this backup", "Please choose another name for this backup",
                          "You must enter a name for this backup", "There is no folder for backups"));
  EXPECT_THAT(logged(), testing::Contains("The name Auto Backup of mine was refused: it is one of automatic backups"));
  EXPECT_FALSE(exists(library()));
}

TEST_F(BackupDialogTest, AnAutomaticBackupKeepsItsNameOrBecomesAManualOne) {
  ASSERT_EQ(QWBackup::autoBackup()->writeData(report_), WriteResult::Success);
  const auto automatic = controller().autoBackupArray().front();
  const std::string name = automatic->name();
  edit_.editBackup(automatic);
  confirm("Auto Backup of mine");
  EXPECT_TRUE(dialog_.isShown);
  confirm(name);
  EXPECT_FALSE(dialog_.isShown);
  EXPECT_TRUE(exists(inLibrary("Autosaves/" + name + ".vnt/Settings.plist")));
  edit_.editBackup(controller().autoBackupArray().front());
  confirm("Mine");
  EXPECT_TRUE(exists(inLibrary("Mine.vnt/Settings.plist")));
  EXPECT_THAT(controller().autoBackupArray(), IsEmpty());
}

TEST_F(BackupDialogTest, ReplacingAsksAndKeepsTheOldOneInTheTrash) {
  confirm("Clean");
  edit_.showBackupDialog();
  const std::string date = localTimeText(*listed("Clean")->date(), "%Y-%m-%d %H:%M:%S");
  for (const auto& [answer, replaces] : {std::pair{QWAlert::Alternate, false}, {QWAlert::Default, true}}) {
    answer_ = answer;
    confirm("Clean");
    EXPECT_EQ(dialog_.isShown, !replaces);
    EXPECT_EQ(exists(inTrash("Clean.vnt/Settings.plist")), replaces);
  }
  EXPECT_THAT(informative_, testing::EndsWith("\n\"Clean\" of " + date + "."));
  EXPECT_THAT(informative_, HasSubstr("already exists at ~/Library/Application Support/Quarrywell/Vantory/Backups. "));
  EXPECT_TRUE(exists(inLibrary("Clean.vnt/Settings.plist")));
}

TEST_F(BackupDialogTest, EditingRenamesAndWritesAnew) {
  confirm("Clean");
  writeFile(prefs("editor.plist"), "newer");
  alerts_.clear();
  edit_.editBackup(listed("Clean"));
  EXPECT_EQ(dialog_.confirmTitle, "Edit");
  confirm("Cleaner");
  EXPECT_FALSE(exists(inLibrary("Clean.vnt")));
  EXPECT_EQ(readFile(inLibrary("Cleaner.vnt") + QWBackup::safeUserPath(prefs("editor.plist"))), "newer");
  edit_.editBackup(listed("Cleaner"));
  confirm("Cleaner");
  EXPECT_THAT(alerts_, IsEmpty()) << "its own name is no reason to ask";
  EXPECT_EQ(edit_.editedBackup(), nullptr);
}

TEST_F(BackupDialogTest, ARenameThatFailsKeepsBothBackups) {
  for (const char* name : {"Clean", "Other"}) confirm(name);
  edit_.editBackup(listed("Clean"));
  files_.fail(Operation::Move, std::errc::io_error, 1);
  confirm("Other");
  for (const char* name : {"Clean.vnt/Settings.plist", "Other.vnt/Settings.plist"})
    EXPECT_TRUE(exists(inLibrary(name))) << name;
  EXPECT_THAT(alerts_, testing::Contains("Unable to rename the backup"));
}

TEST_F(BackupDialogTest, ListsProjectsOnce) {
  const std::string a = home_ / "a.FCP", b = home_ / "b.motn", old = home_ / "Old Project", text = home_ / "text.txt";
  for (const std::string& file : {a, b, old, text}) writeFile(file, "project");
  ASSERT_TRUE(metadata_.setFinderInfo(old, "FCPFKeyG" + std::string(24, '\0')));
  edit_.showBackupDialog();
  chooser_.answer = {a, b, text, old, home_ / "b\xef\xbf\xbd.fcp"};
  edit_.addProject();
  edit_.addProject();
  EXPECT_THAT(chooser_.request.extensions, testing::Contains("colorproj"));
  EXPECT_THAT(dialog_.projects, ElementsAre(a, b, old));
  EXPECT_THAT(alerts_, ElementsAre("Not linked", "Not linked"));
  EXPECT_THAT(logged(), testing::Contains(HasSubstr("Not linked: text.txt is no project file. b")));
  dialog_.selection = {0, 2, 9};
  edit_.removeProject();
  EXPECT_THAT(dialog_.projects, ElementsAre(b));
  confirm("Linked");
  EXPECT_THAT(listed("Linked")->projects(), ElementsAre(b));
}

TEST_F(BackupDialogTest, AnEditSetsTheProjectsAfterTheTaskBefore) {
  confirm("Clean");
  const auto backup = listed("Clean");
  restoreOutline_.selected = rowOf(restore_, backup);
  restore_.unlinkProjects();
  edit_.editBackup(backup);
  writeFile(home_ / "a.fcp", "project");
  chooser_.answer = {home_ / "a.fcp"};
  edit_.addProject();
  confirm("Clean");
  EXPECT_THAT(listed("Clean")->projects(), ElementsAre(home_ / "a.fcp"));
}

TEST_F(BackupDialogTest, OffersToOpenProjects) {
  edit_.showBackupDialog();
  finishWork();
  EXPECT_TRUE(dialog_.showsNotice);
  for (const bool accepts : {false, true}) {
    accepts_ = accepts;
    edit_.enableProjectHandling();
    finishWork();
    EXPECT_EQ(dialog_.showsNotice, !accepts);
  }
  EXPECT_EQ(alerts_.size(), 1U) << "the desktop did not take it at first";
}

TEST_F(BackupDialogTest, ABackupThatLacksAFileIsToldOf) {
  edit_.showBackupDialog();
  files_.fail(Operation::StageCopy, std::errc::no_space_on_device, 1);
  confirm("Half");
  EXPECT_EQ(alerts_.back(), "Not everything could be backed up");
  EXPECT_TRUE(exists(inLibrary("Half.vnt/Settings.plist")));
}

}  // namespace
}  // namespace vantory::test
