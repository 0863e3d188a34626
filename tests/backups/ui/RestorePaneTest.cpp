#include "backups/ui/QWRestoreOutlineController.h"
#include "services/settings/QWUserDefaults.h"
#include "tests/backups/ui/PaneTest.h"

namespace vantory::test {
namespace {

class RestorePaneTest : public PaneTest {
 protected:
  RestorePaneTest() {
    setTwoApps();
    QWUserDefaults::standardUserDefaults().registerDefaults({{"sortedColumn", PropertyList("name")}});
  }
  // A new backup, whose row is selected.
  std::shared_ptr<QWBackup> written(const std::string& name, const std::vector<std::string>& projects = {}) {
    const auto backup = backupOfAll(name);
    backup->setProjects(projects);
    EXPECT_EQ(backup->writeData(report_), WriteResult::Success);
    finishWork();
    select(listed(name));
    return listed(name);
  }
  void writeAutomaticBackup() {
    ASSERT_EQ(QWBackup::autoBackup()->writeData(report_), WriteResult::Success);
    select(controller().autoBackupArray().front());
  }
  void select(const RecordRow::Record& record) { outline_.selected = rowOf(pane_, record); }
  void finishAfter(void (QWRestoreOutlineController::*command)()) {
    (pane_.*command)();
    finishWork();
  }
  std::vector<std::string> names() {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < pane_.numberOfChildrenOfItem(nullptr); ++i)
      names.push_back(std::get<std::string>(pane_.objectValueForTableColumn("name", pane_.child(i, nullptr))));
    return names;
  }

  QWRestoreOutlineController pane_{{outline_, button_, spinner_, *this}};
};

TEST_F(RestorePaneTest, ShowsTheLibraryWithTheAutomaticBackupsFirst) {
  writeAutomaticBackup();
  const auto backup = written("Clean");
  ASSERT_THAT(names(), ElementsAre("Autosaves", "Clean"));
  EXPECT_EQ(pane_.numberOfChildrenOfItem(pane_.child(0, nullptr)), 1U);
  const auto app = pane_.child(0, rowOf(pane_, backup));
  EXPECT_EQ(nameOfRow(app), "Editor");
  EXPECT_EQ(std::get<State>(pane_.objectValueForTableColumn("name", app)), On);
  EXPECT_EQ(pane_.objectValueForTableColumn("size", app), ObjectValue()) << "measuring it must not stop the window";
  finishWork();
  EXPECT_EQ(outline_.reloadedItems.back()->identity(), inLibrary("Clean.vnt") + "\nEditor");
  EXPECT_EQ(std::get<std::string>(pane_.objectValueForTableColumn("size", app)), "17 B");
  const auto layouts = backup->children()[0]->children()[1];
  EXPECT_EQ(std::get<std::string>(pane_.objectValueForTableColumn("size", rowOf(pane_, layouts))), "6 B");
  EXPECT_EQ(pane_.objectValueForTableColumn("date", app), ObjectValue()) << "the backup's date alone";
  EXPECT_TRUE(std::holds_alternative<Timestamp>(pane_.objectValueForTableColumn("date", rowOf(pane_, backup))));
  select(backup->children()[1]->children()[0]->users()[0]);
  EXPECT_EQ(pane_.selectedBackup(), backup);
}

TEST_F(RestorePaneTest, MarksAnIncompleteBackupAndMakesItNoDefault) {
  written("Torn");
  std::filesystem::remove(inLibrary("Torn.vnt/Settings.plist"));
  controller().populateBackups();
  finishWork();
  select(listed("Torn"));
  OutlineCell cell;
  pane_.willDisplayCell(cell, "name", outline_.selected);
  EXPECT_EQ(cell.remark, "incomplete");
  pane_.toggleDefault();
  EXPECT_FALSE(QWBackup::defaultBackupName());
  EXPECT_EQ(alerts_.back(), "An incomplete backup cannot be the default");
  std::vector<std::string> told;
  onAlert_ = [&](const AlertTexts& texts) { return told.push_back(texts.informativeText), QWAlert::Default; };
  finishAfter(&QWRestoreOutlineController::restore);
  ASSERT_EQ(told.size(), 2U);
  EXPECT_THAT(told[0], HasSubstr("\"Torn\" is incomplete"));
  EXPECT_EQ(alerts_.back(), "Nothing was restored");
  EXPECT_THAT(told[1], testing::StartsWith("The Settings.plist of ")) << "it is not said twice";
}

TEST_F(RestorePaneTest, SortsAndRemembers) {
  for (const char* name : {"b", "A", "c"}) written(name);
  pane_.reload();
  EXPECT_THAT(names(), ElementsAre("Autosaves", "A", "b", "c"));
  pane_.didClickTableColumn("name");
  EXPECT_THAT(names(), ElementsAre("Autosaves", "c", "b", "A"));
  EXPECT_EQ(outline_.indicators["name"], SortIndicator::Descending);
  controller().populateBackups();
  finishWork();
  const auto unmeasured = std::make_shared<RecordRow>(QWBackup::backupWithFile(inLibrary("A.vnt")));
  EXPECT_EQ(pane_.objectValueForTableColumn("size", unmeasured), ObjectValue()) << "measuring must not stop the window";
  EXPECT_NE(pane_.objectValueForTableColumn("size", rowOf(pane_, listed("A"))), ObjectValue());
  EXPECT_THAT(names(), ElementsAre("Autosaves", "c", "b", "A"));
  pane_.didClickTableColumn("size");
  EXPECT_EQ(outline_.indicators["name"], SortIndicator::None);
  EXPECT_EQ(outline_.indicators["size"], SortIndicator::Ascending);
  EXPECT_EQ(QWUserDefaults::standardUserDefaults().stringForKey("sortedColumn"), "size");
}

TEST_F(RestorePaneTest, RenamesInPlaceAlsoTheDefault) {
  written("Taken");
  const auto backup = written("Clean");
  const auto rename = [&](const std::shared_ptr<QWBackup>& backup, const std::string& name) {
    pane_.setObjectValue(name, "name", rowOf(pane_, backup));
    finishWork();
  };
  for (const char* title : {"Unset Default Backup", "Set as Default Backup", "Unset Default Backup"}) {
    pane_.toggleDefault();
    EXPECT_EQ(button_.title, title);
  }
  files_.refuseWrites();
  pane_.toggleDefault();
  files_.heal();
  EXPECT_EQ(button_.title, "Unset Default Backup") << "it is the default still";
  EXPECT_THAT(std::exchange(alerts_, {}), ElementsAre("The default backup could not be changed"));
  EXPECT_EQ(QWUserDefaults::standardUserDefaults().stringForKey("defaultBackup"), "Clean.vnt");
  EXPECT_THAT(logged(), testing::IsSupersetOf(
                            {"Clean was set as the default backup", "Clean was removed as the default backup"}));
  for (const char* name : {" / ", "Clean", "Auto Backup of mine"}) rename(backup, name);
  EXPECT_TRUE(exists(inLibrary("Clean.vnt")));
  EXPECT_THAT(alerts_, ElementsAre("Please choose another name for this backup"));
  EXPECT_TRUE(backup->isDefault());
  rename(backup, "Taken");
  EXPECT_TRUE(exists(inLibrary("Taken-2.vnt/Settings.plist")));
  EXPECT_THAT(names(), testing::Contains("Taken-2"));
  EXPECT_FALSE(backup->isDefault()) << "it is known by its folder's name";
  rename(listed("Taken"), std::string(300, 'x'));
  EXPECT_TRUE(exists(inLibrary("Taken.vnt/Settings.plist"))) << "a name that cannot be leaves everything as it is";

  // An automatic one takes no name that is in use among the manual ones, or among its own.
  writeAutomaticBackup();
  writeFile(inLibrary("Autosaves/Taken-3.vnt/Settings.plist"), "");
  rename(controller().autoBackupArray().front(), "Taken");
  EXPECT_TRUE(exists(inLibrary("Autosaves/Taken-4.vnt/Settings.plist")));
}

TEST_F(RestorePaneTest, CommandsThatWaitKnowARenamedBackup) {
  const auto selected = written("Clean", {"/projects/film.fcp"});
  controller().populateBackups();
  pane_.setObjectValue(std::string("Fresh"), "name", std::make_shared<RecordRow>(selected));
  finishAfter(&QWRestoreOutlineController::unlinkProjects);
  EXPECT_THAT(names(), ElementsAre("Autosaves", "Fresh"));
  EXPECT_THAT(listed("Fresh")->projects(), IsEmpty());

  ASSERT_TRUE(disk_.remove(inLibrary("Fresh.vnt")));
  finishAfter(&QWRestoreOutlineController::unlinkProjects);
  EXPECT_THAT(alerts_, ElementsAre("The backup is no longer there"));
  EXPECT_THAT(names(), ElementsAre("Autosaves")) << "nothing is written in the place of one that has gone";
}

// Written anew it would hold nothing of what is not known here.
TEST_F(RestorePaneTest, ChangesNoBackupOfWhichItDoesNotKnowAll) {
  written("Clean", {"/projects/film.fcp"});
  const std::string settings = inLibrary("Clean.vnt/Settings.plist");
  std::string text = readFile(settings);
  const std::string other = "<key>Other Editor</key><array><string>Looks</string></array>";
  writeFile(settings, text.insert(text.find("<key>"), other));
  controller().populateBackups();
  select(listed("Clean"));
  finishAfter(&QWRestoreOutlineController::unlinkProjects);
  EXPECT_THAT(alerts_, ElementsAre("\"Clean\" cannot be changed here"));
  EXPECT_THAT(readFile(settings), HasSubstr("Other Editor"));
}

TEST_F(RestorePaneTest, RestoresWhatIsTickedAfterAQuestion) {
  const auto backup = written("Clean");
  writeFile(prefs("editor.plist"), "broken");
  writeFile(prefs("editor.layout"), "mine");
  pane_.setObjectValue(Off, "name", rowOf(pane_, backup->children()[0]->children()[1]));
  answer_ = QWAlert::Alternate;
  finishAfter(&QWRestoreOutlineController::restore);
  EXPECT_EQ(readFile(prefs("editor.plist")), "broken");

  answer_ = QWAlert::Default;
  finishAfter(&QWRestoreOutlineController::restore);
  EXPECT_EQ(readFile(prefs("editor.plist")), "preferences");
  EXPECT_EQ(readFile(prefs("editor.layout")), "mine") << "not ticked";
  EXPECT_EQ(controller().autoBackupArray().size(), 0U) << "none are kept where no number is set";
  const std::string question = "Are you sure you wish to restore this backup?";
  EXPECT_THAT(alerts_, ElementsAre(question, question, "Preferences successfully restored"));
  EXPECT_FALSE(spinner_.isTurning);

  alerts_.clear();
  ASSERT_TRUE(disk_.remove(inLibrary("Clean.vnt")));
  finishAfter(&QWRestoreOutlineController::restore);
  EXPECT_THAT(alerts_, ElementsAre(question, "The backup is no longer there"));
  EXPECT_THAT(names(), ElementsAre("Autosaves"));
}

TEST_F(RestorePaneTest, AnotherTryMakesNoOtherSafetyBackupButWhereTheFirstFailed) {
  const auto backup = written("Clean");
  int tries = 0;
  onAlert_ = [&](const AlertTexts& texts) {
    return texts.alternateButton == "Try Again" && ++tries < 3 ? QWAlert::Alternate : QWAlert::Default;
  };
  for (const auto& [operation, backups] : {std::pair{Operation::Trash, 1}, {Operation::StageCopy, 3}}) {
    files_.fail(operation, std::errc::io_error, FaultyFileSystem::kEveryCall);
    finishAfter(&QWRestoreOutlineController::restore);
    EXPECT_EQ(std::exchange(tries, 0), 3);
    EXPECT_EQ(std::ranges::count(logged(), "Creating auto backup..."), backups);
  }
}

TEST_F(RestorePaneTest, UpdatingAsksFirstAndClaimsNoMoreThanWasDone) {
  const std::string copy = "/Users/user/Library/Preferences/editor.plist";
  written("Clean");
  writeFile(prefs("editor.plist"), "newer");
  answer_ = QWAlert::Alternate;
  finishAfter(&QWRestoreOutlineController::updateFiles);
  EXPECT_EQ(readFile(inLibrary("Clean.vnt") + copy), "preferences");
  EXPECT_THAT(informative_, testing::StartsWith("\"Clean\" of " + localTimeText(*listed("Clean")->date(), "%Y")));

  answer_ = QWAlert::Default;
  finishAfter(&QWRestoreOutlineController::updateFiles);
  EXPECT_EQ(readFile(inLibrary("Clean.vnt") + copy), "newer");
  EXPECT_EQ(readFile(inTrash("Clean (replaced copies)") + copy), "preferences");
  files_.fail(Operation::StageCopy, std::errc::no_space_on_device, FaultyFileSystem::kEveryCall);
  finishAfter(&QWRestoreOutlineController::updateFiles);
  files_.heal();
  std::filesystem::remove(prefs("editor.plist"));
  std::filesystem::create_symlink(home_ / "elsewhere", prefs("editor.plist"));
  finishAfter(&QWRestoreOutlineController::updateFiles);
  const std::string question = "Do you want to update the files of \"Clean\"?";
  EXPECT_THAT(alerts_, ElementsAre(question, question, "Files successfully updated", question, "Unable to update files",
                                   question, "Some files were left out"));
}

TEST_F(RestorePaneTest, UpdatingClaimsNothingWhereNothingWasUpdated) {
  written("Torn");
  std::filesystem::remove(inLibrary("Torn.vnt/Settings.plist"));
  controller().populateBackups();
  select(listed("Torn"));
  finishAfter(&QWRestoreOutlineController::updateFiles);
  EXPECT_THAT(alerts_, ElementsAre("Unable to update files"));
  EXPECT_THAT(informative_, HasSubstr("\"Torn\" is incomplete"));

  written("Clean");
  for (const char* name : {"editor.plist", "editor.layout"}) ASSERT_TRUE(disk_.remove(prefs(name)));
  for (const char* user : {"anna", "ben"}) ASSERT_TRUE(disk_.remove(avidFile(user)));
  finishAfter(&QWRestoreOutlineController::updateFiles);
  EXPECT_EQ(alerts_.back(), "Unable to update files");
  EXPECT_EQ(informative_, QWBackup::kNothingToUpdate);
}

TEST_F(RestorePaneTest, TheDeleteKeyRemovesBackupsOnly) {
  select(written("Clean")->children()[0]);
  EXPECT_FALSE(pane_.keyUp(OutlineKey::Delete)) << "an application is no backup";
  select(controller().backupArray().front());
  EXPECT_EQ(pane_.selectedBackup(), nullptr);
  EXPECT_FALSE(pane_.keyUp(OutlineKey::Delete)) << "nor is the group of automatic ones";

  select(listed("Clean"));
  answer_ = QWAlert::Alternate;
  EXPECT_TRUE(pane_.keyUp(OutlineKey::Delete));
  finishWork();
  EXPECT_TRUE(exists(inLibrary("Clean.vnt"))) << "the person thought better of it";
  EXPECT_THAT(informative_, HasSubstr("\n\"Clean\" of " + localTimeText(*listed("Clean")->date(), "%Y")));

  answer_ = QWAlert::Default;
  files_.fail(Operation::Trash, std::errc::read_only_file_system, FaultyFileSystem::kEveryCall);
  writeAutomaticBackup();
  for (const std::size_t left : {1, 0}) {
    select(controller().autoBackupArray().front());
    EXPECT_TRUE(pane_.keyUp(OutlineKey::Delete));
    finishWork();
    EXPECT_EQ(pane_.numberOfChildrenOfItem(pane_.child(0, nullptr)), left);
    files_.heal();
  }
  EXPECT_EQ(alerts_[2], "Unable to remove the backup");
}

TEST_F(RestorePaneTest, HandsFilesToOtherPrograms) {
  const std::string project = home_ / "a.fcp";
  writeFile(project, "project");
  select(written("Linked", {project, home_ / "gone.fcp"})->children()[0]);
  finishAfter(&QWRestoreOutlineController::revealLinkedProjects);
  EXPECT_THAT(fakes_.documents.revealed, ElementsAre(project));
  EXPECT_THAT(alerts_, ElementsAre("Projects are missing"));
  finishAfter(&QWRestoreOutlineController::revealFinder);
  EXPECT_THAT(fakes_.documents.revealed, ElementsAre(inLibrary("Linked.vnt")));
  outline_.selected = pane_.child(0, nullptr);
  finishAfter(&QWRestoreOutlineController::revealFinder);
  EXPECT_THAT(fakes_.documents.opened, ElementsAre(inLibrary("Autosaves")));
}

TEST_F(RestorePaneTest, UnlinkingTellsOfAFileThatTheBackupNowLacks) {
  written("Linked", {"/tmp/a.fcp"});
  std::filesystem::remove(prefs("editor.plist"));
  std::filesystem::create_symlink(home_ / "elsewhere", prefs("editor.plist"));
  finishAfter(&QWRestoreOutlineController::unlinkProjects);
  EXPECT_THAT(alerts_, ElementsAre("Some files were left out"));
}

TEST_F(RestorePaneTest, UnlinkingMakesNoHalfBackup) {
  written("Linked", {"/tmp/a.fcp"});
  files_.heal();
  files_.fail(Operation::Write, std::errc::io_error);
  finishAfter(&QWRestoreOutlineController::unlinkProjects);
  EXPECT_THAT(alerts_, ElementsAre("Unable to unlink the projects"));
  EXPECT_THAT(informative_, HasSubstr("the earlier backup stays as it is"));
  EXPECT_TRUE(exists(inLibrary("Linked.vnt/Settings.plist"))) << "the old one";
  EXPECT_FALSE(exists(inTrash("Linked.vnt")));
}

}  // namespace
}  // namespace vantory::test
