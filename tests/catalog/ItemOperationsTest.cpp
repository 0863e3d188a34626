#include <filesystem>

#include "catalog/QWApp.h"
#include "platform/linux/LinuxFileMetadata.h"
#include "services/FailureTally.h"
#include "tests/catalog/CatalogFixture.h"

namespace vantory {
namespace {

using test::exists;
using test::makeFolders;
using test::Operation;
using test::writeFile;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

using ItemOperationsTest = test::CatalogTest;

TEST_F(ItemOperationsTest, TrashTakesCompanionsAndLinksToNothing) {
  writeFile(home_ / "a.plist", "a");
  writeFile(home_ / "a.plist.lockfile", "");
  writeFile(home_ / "gone.lockfile", "");
  std::filesystem::create_symlink("/nowhere", home_ / "link");
  const auto item = itemWith({home_ / "a.*st", home_ / "gone", home_ / "link", home_ / "none"});
  item->setLocked(On);

  EXPECT_EQ(item->trash(), 4);
  EXPECT_EQ(item->locked(), Off);
  EXPECT_THAT(logged(), ElementsAre("Trashing file " + (home_ / "a.plist"), "Trashing file " + (home_ / "link")));
  for (const char* name : {"a.plist", "a.plist.lockfile", "gone.lockfile", "link"}) {
    EXPECT_TRUE(exists(inTrash(name))) << name;
    EXPECT_FALSE(exists(home_ / name)) << name;
  }
}

TEST_F(ItemOperationsTest, TrashGoesOnAfterAFailureAndTakesTickedUsersOnly) {
  for (const char* name : {"own", "on", "mixed"}) writeFile(home_ / name, name);
  const auto item = itemWith({home_ / "own"});
  for (const auto& [name, state] : {std::pair("on", On), {"mixed", Mixed}}) {
    item->addUser(itemWith({home_ / name}));
    item->users().back()->setSelected(state);
  }
  files_.fail(Operation::Trash, std::errc::io_error);
  const std::size_t failures = FailureTally::shared().count();
  EXPECT_EQ(item->trash(), 1);
  EXPECT_EQ(FailureTally::shared().count(), failures + 1);
  EXPECT_TRUE(exists(home_ / "own"));
  EXPECT_FALSE(exists(home_ / "on"));
  EXPECT_TRUE(exists(home_ / "mixed"));
}

TEST_F(ItemOperationsTest, LockingReachesTheParentWithoutAskingItsOtherFiles) {
  writeFile(home_ / "a", "");
  writeFile(home_ / "b", "");
  const auto app = QWApp::appWithName("App", "", "");
  const auto item = app->addItemWithName("Layouts", "layouts", true, {home_ / "a", home_ / "b"});
  app->addItemWithName("Other", "other", true, {home_ / "*.none"})->setLocked(On);
  metadata_.locked = {home_ / "a"};
  item->updateLockStatus();
  EXPECT_EQ(item->locked(), Mixed);

  item->lockFiles(On);
  EXPECT_THAT(metadata_.locked, UnorderedElementsAre(home_ / "a", home_ / "b"));
  EXPECT_EQ(item->locked(), On);
  EXPECT_EQ(app->locked(), On);
  files_.heal();
  app->updateLockStatus();
  EXPECT_EQ(files_.calls(Operation::Info), 2);
  EXPECT_EQ(app->locked(), Mixed);

  (void)logged();
  app->lockFiles(Off);
  EXPECT_THAT(metadata_.locked, IsEmpty());
  EXPECT_EQ(app->locked(), Off);
  EXPECT_THAT(logged(), ElementsAre("Unlocking file " + (home_ / "a"), "Unlocking file " + (home_ / "b")));
}

TEST_F(ItemOperationsTest, LockStateOfItemsWithoutFiles) {
  writeFile(home_ / "a", "");
  metadata_.locked = {home_ / "a"};
  const auto holder = itemWith({}), workspaces = itemWith({home_ / "a"}, false);
  workspaces->lockFiles(Off);
  EXPECT_THAT(logged(), IsEmpty());
  holder->updateLockStatus();
  EXPECT_EQ(holder->locked(), Mixed);
  holder->addUser(itemWith({home_ / "a"}));
  holder->updateLockStatus();
  EXPECT_EQ(holder->locked(), On);
}

TEST_F(ItemOperationsTest, AvidUsersAreTheFoldersOfTheUsersFolder) {
  const std::string live = machine_ / "Users/Shared/AvidMediaComposer/Avid Users";
  const test::FolderBackup backup(home_ / "x.vnt", home_.path());
  for (const std::string& folder : {live, backup.path() + live}) {
    for (const char* name : {"/AvidWebCache", "/anna", "/ben%@", "/c*"}) makeFolders(folder + name);
    writeFile(folder + "/Site", "");
  }
  writeFile(live + "/anna/MCState", "");
  metadata_.locked = {live + "/anna/MCState"};
  const auto item = itemWith({}, false);
  item->setSelected(Mixed);
  for (const auto& root : {std::optional<std::string>(), std::optional(backup.path())}) {
    item->populateAvidUsersInBackup(root);
    EXPECT_THAT(logged(), testing::IsSupersetOf({"Populating Avid users...", "Found user anna", "Found user ben%@"}));
    ASSERT_EQ(item->users().size(), 2u);
    for (const auto& user : item->users()) {
      EXPECT_EQ(user->key(), "avidPrefUser" + user->name());
      const std::string own = live + "/" + user->name() + "/";
      EXPECT_THAT(user->files(), ElementsAre(own + user->name() + " Settings.avs", own + user->name() + " Settings.xml",
                                             own + user->name() + ".ave", own + "Media Tool.avb", own + "MCState"));
      EXPECT_EQ(user->selected(), On);
      EXPECT_EQ(user->locked(), user->name() == "anna" ? Mixed : Off);
    }
  }
}

TEST_F(ItemOperationsTest, MeasuresWhatLiesInTheBackupOnce) {
  const auto backup = std::make_shared<test::FolderBackup>(home_ / "x*.vnt", home_.path());
  writeFile(backup->path() + "/Users/user/Library/a.plist", "12345");
  writeFile(backup->path() + "/Users/user/Library/Bars/inside", std::string(9999, 'x'));
  writeFile(home_ / "xyz.vnt/Users/user/Library/a.plist", "another backup");
  const std::string bars = backup->path() + "/Users/user/Library/Bars";
  ASSERT_TRUE(LinuxFileMetadata().setModified(backup->path() + "/Users/user/Library/a.plist", {1000, 5}));
  ASSERT_TRUE(LinuxFileMetadata().setModified(bars, {900, 0}));
  const auto item = itemWith({home_ / "Library/Ba*s", home_ / "Library/missing"});
  item->addUser(itemWith({home_ / "Library/a.plist"}));
  item->users()[0]->setSelected(Off);
  EXPECT_FALSE(item->date() || item->size());

  item->measureWhenAsked(backup);
  EXPECT_EQ(item->date(), (Timestamp{1000, 5}));
  EXPECT_EQ(item->size(), disk_.info(bars, Links::Follow)->size + 5);
  files_.heal();
  (void)item->size();
  EXPECT_EQ(files_.calls(Operation::Info), 0);
}

}  // namespace
}  // namespace vantory
