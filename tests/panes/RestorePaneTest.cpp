#include <fstream>

#include "backups/ui/QWRestoreOutlineController.h"
#include "platform/Documents.h"
#include "tests/panes/PaneTest.h"

namespace vantory::test {
namespace {

class RestorePaneTest : public PaneTest {
 protected:
  RestorePaneTest() {
    setTwoApps();
    QWUserDefaults::standardUserDefaults().registerDefaults({{"sortedColumn", PropertyList("name")}});
  }
  std::shared_ptr<QWBackup> written(const std::string& name) {
    EXPECT_EQ(backupOfAll(name)->writeData(), WriteResult::Success);
    return listed(name);
  }
  std::shared_ptr<QWBackup> listed(const std::string& name) {
    for (const auto& node : controller().backupArray())
      if (node->name() == name) return std::dynamic_pointer_cast<QWBackup>(node);
    return nullptr;
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
  ASSERT_EQ(QWBackup::autoBackup()->writeData(), WriteResult::Success);
  const auto backup = written("Clean");
  ASSERT_THAT(names(), ElementsAre("Autosaves", "Clean"));
  EXPECT_EQ(pane_.numberOfChildrenOfItem(pane_.child(0, nullptr)), 1U);
  const auto app = pane_.child(0, backup);
  EXPECT_EQ(nameOfRow(app), "Editor");
  EXPECT_EQ(std::get<int>(pane_.objectValueForTableColumn("name", app)), On);
  EXPECT_EQ(pane_.objectValueForTableColumn("size", app), ObjectValue()) << "measuring it must not stop the window";
  finishWork();
  EXPECT_THAT(outline_.reloadedItems, testing::Contains(app));
  EXPECT_EQ(std::get<std::string>(pane_.objectValueForTableColumn("size", app)), "17 B");
  EXPECT_EQ(std::get<std::string>(pane_.objectValueForTableColumn("size", backup->children()[0]->children()[1])),
            "6 B");
  EXPECT_EQ(pane_.objectValueForTableColumn("date", app), ObjectValue()) << "the backup's date alone";
  EXPECT_TRUE(std::holds_alternative<Timestamp>(pane_.objectValueForTableColumn("date", backup)));
  EXPECT_THAT(std::get<std::string>(pane_.objectValueForTableColumn("size", backup)), HasSubstr("B"));
}

TEST_F(RestorePaneTest, ARowBelongsToTheBackupItLiesIn) {
  const auto backup = written("Clean");
  written("Other");
  EXPECT_EQ(pane_.selectedBackup(), nullptr);
  outline_.selected = controller().backupArray().front();
  EXPECT_EQ(pane_.selectedBackup(), nullptr) << "the group is no backup";
  const auto found = listed("Clean");
  outline_.selected = found->children()[1]->children()[0]->users()[0];
  EXPECT_EQ(pane_.selectedBackup(), found);
  pane_.selectBackupWithPath(inLibrary("Other.vnt"));
  EXPECT_EQ(pane_.selectedBackup(), listed("Other"));
}

TEST_F(RestorePaneTest, SortsAndRemembers) {
  for (const char* name : {"b", "A", "c"}) written(name);
  pane_.reload();
  EXPECT_THAT(names(), ElementsAre("Autosaves", "A", "b", "c"));
  pane_.didClickTableColumn("name");
  EXPECT_THAT(names(), ElementsAre("Autosaves", "c", "b", "A"));
  EXPECT_EQ(outline_.indicators["name"], SortIndicator::Descending);
  controller().populateBackups();
  EXPECT_THAT(names(), ElementsAre("Autosaves", "c", "b", "A"));
  pane_.didClickTableColumn("size");
  EXPECT_EQ(outline_.indicators["name"], SortIndicator::None);
  EXPECT_EQ(outline_.indicators["size"], SortIndicator::Ascending);
  EXPECT_EQ(QWUserDefaults::standardUserDefaults().stringForKey("sortedColumn"), "size");
}

TEST_F(RestorePaneTest, RenamesInPlace) {
  written("Clean");
  written("Taken");
  const auto backup = listed("Clean");
  const auto rename = [&](const std::shared_ptr<QWBackup>& backup, const std::string& name) {
    pane_.setObjectValue(name, "name", backup);
    finishWork();
  };
  outline_.selected = backup;
  pane_.toggleDefault();
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
  ASSERT_EQ(QWBackup::autoBackup()->writeData(), WriteResult::Success);
  writeFile(inLibrary("Autosaves/Taken-3.vnt/Settings.plist"), "");
  rename(controller().autoBackupArray().front(), "Taken");
  EXPECT_TRUE(exists(inLibrary("Autosaves/Taken-4.vnt/Settings.plist")));
}

TEST_F(RestorePaneTest, CommandsThatWaitKnowARenamedBackup) {
  written("Clean");
  const auto selected = listed("Clean");
  selected->setProjects({"/projects/film.fcp"});
  outline_.selected = selected;
  controller().populateBackups();
  pane_.setObjectValue(std::string("Fresh"), "name", selected);
  pane_.unlinkProjects();
  finishWork();
  EXPECT_THAT(names(), ElementsAre("Autosaves", "Fresh"));

  ASSERT_TRUE(disk_.remove(inLibrary("Fresh.vnt")));
  pane_.unlinkProjects();
  finishWork();
  EXPECT_THAT(alerts_, ElementsAre("The backup is no longer there"));
  EXPECT_THAT(names(), ElementsAre("Autosaves")) << "nothing is written in the place of one that has gone";
}

TEST_F(RestorePaneTest, TheDefaultIsSetAndUnset) {
  written("Clean");
  outline_.selected = listed("Clean");
  pane_.selectionDidChange();
  EXPECT_EQ(button_.title, "Set as Default Backup");
  pane_.toggleDefault();
  EXPECT_EQ(QWUserDefaults::standardUserDefaults().stringForKey("defaultBackup"), "Clean.vnt");
  EXPECT_TRUE(listed("Clean")->isDefault());
  EXPECT_EQ(button_.title, "Unset Default Backup");
  pane_.toggleDefault();
  EXPECT_FALSE(listed("Clean")->isDefault());
  EXPECT_EQ(QWBackup::defaultBackupName(), std::nullopt);
  EXPECT_THAT(logged(), testing::IsSupersetOf(
                            {"Clean was set as the default backup", "Clean was removed as the default backup"}));
}

TEST_F(RestorePaneTest, RestoresAfterASafetyBackup) {
  written("Clean");
  writeFile(prefs("editor.plist"), "broken");
  writeFile(prefs("editor.layout"), "mine");
  const auto backup = listed("Clean");
  pane_.setObjectValue(Off, "name", backup->children()[0]->children()[1]);
  outline_.selected = backup;
  answer_ = QWAlert::Alternate;
  pane_.restore();
  finishWork();
  EXPECT_EQ(readFile(prefs("editor.plist")), "broken");

  answer_ = QWAlert::Default;
  pane_.restore();
  finishWork();
  EXPECT_EQ(readFile(prefs("editor.plist")), "preferences");
  EXPECT_EQ(readFile(prefs("editor.layout")), "mine") << "not ticked";
  EXPECT_EQ(controller().autoBackupArray().size(), 0U) << "none are kept where no number is set";
  EXPECT_THAT(alerts_,
              ElementsAre("Are you sure you wish to restore this backup?",
                          "Are you sure you wish to restore this backup?", "Preferences successfully restored"));
  EXPECT_FALSE(spinner_.isTurning);
}

TEST_F(RestorePaneTest, TheDeleteKeyRemovesABackupIntoTheTrash) {
  written("Clean");
  outline_.selected = controller().backupArray().front();
  EXPECT_FALSE(pane_.keyUp(OutlineKey::Delete));
  outline_.selected = listed("Clean")->children()[0];
  EXPECT_FALSE(pane_.keyUp(OutlineKey::Delete)) << "an application is no backup";
  outline_.selected = listed("Clean");
  answer_ = QWAlert::Alternate;
  EXPECT_TRUE(pane_.keyUp(OutlineKey::Delete));
  EXPECT_TRUE(exists(inLibrary("Clean.vnt")));
  answer_ = QWAlert::Default;
  EXPECT_TRUE(pane_.keyUp(OutlineKey::Delete));
  finishWork();
  EXPECT_TRUE(exists(inTrash("Clean.vnt")));
  EXPECT_THAT(names(), ElementsAre("Autosaves"));

  ASSERT_EQ(QWBackup::autoBackup()->writeData(), WriteResult::Success);
  outline_.selected = controller().autoBackupArray().front();
  files_.fail(Operation::Trash, std::errc::read_only_file_system, FaultyFileSystem::kEveryCall);
  EXPECT_TRUE(pane_.keyUp(OutlineKey::Delete));
  finishWork();
  EXPECT_EQ(alerts_.back(), "Unable to remove the backup");
  EXPECT_EQ(pane_.numberOfChildrenOfItem(pane_.child(0, nullptr)), 1U) << "it is still there";
  files_.heal();
  outline_.selected = controller().autoBackupArray().front();
  EXPECT_TRUE(pane_.keyUp(OutlineKey::Delete));
  finishWork();
  EXPECT_EQ(pane_.numberOfChildrenOfItem(pane_.child(0, nullptr)), 0U);
}

TEST_F(RestorePaneTest, ABackupThatVanishedIsNotCalledRestored) {
  written("Clean");
  outline_.selected = listed("Clean");
  ASSERT_TRUE(disk_.remove(inLibrary("Clean.vnt")));
  pane_.restore();
  finishWork();
  EXPECT_THAT(alerts_, ElementsAre("Are you sure you wish to restore this backup?", "The backup is no longer there"));
  EXPECT_THAT(names(), ElementsAre("Autosaves"));
}

TEST_F(RestorePaneTest, HandsFilesToOtherPrograms) {
  const std::string project = home_ / "a.fcp";
  writeFile(project, "project");
  auto backup = backupOfAll("Linked");
  backup->setProjects({project, home_ / "gone.fcp"});
  ASSERT_EQ(backup->writeData(), WriteResult::Success);
  outline_.selected = listed("Linked")->children()[0];
  pane_.revealLinkedProjects();
  finishWork();
  EXPECT_THAT(fakes_.documents.revealed, ElementsAre(project));
  EXPECT_THAT(alerts_, ElementsAre("Projects are missing"));
  pane_.revealFinder();
  finishWork();
  EXPECT_THAT(fakes_.documents.revealed, ElementsAre(inLibrary("Linked.vnt")));
  outline_.selected = pane_.child(0, nullptr);
  pane_.revealFinder();
  finishWork();
  EXPECT_THAT(fakes_.documents.opened, ElementsAre(inLibrary("Autosaves")));
}

TEST_F(RestorePaneTest, UnlinkingWritesTheBackupAnew) {
  auto backup = backupOfAll("Linked");
  backup->setProjects({"/tmp/a.fcp"});
  ASSERT_EQ(backup->writeData(), WriteResult::Success);
  outline_.selected = listed("Linked");
  pane_.unlinkProjects();
  finishWork();
  EXPECT_THAT(listed("Linked")->projects(), IsEmpty());

  for (const std::string& file : {prefs("editor.plist"), prefs("editor.layout"), avidFile("anna"), avidFile("ben")})
    ASSERT_TRUE(disk_.remove(file));
  outline_.selected = listed("Linked");
  pane_.unlinkProjects();
  finishWork();
  EXPECT_THAT(alerts_, ElementsAre("Unable to unlink the projects"));
  EXPECT_FALSE(exists(inLibrary("Linked.vnt"))) << "no half backup";
  EXPECT_TRUE(exists(inTrash("Linked.2.vnt/Settings.plist"))) << "but the old one";
}

}  // namespace
}  // namespace vantory::test
