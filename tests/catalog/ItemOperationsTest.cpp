#include <filesystem>

#include "tests/catalog/CatalogFixture.h"

namespace vantory {
namespace {

using test::exists;
using test::makeFolders;
using test::Operation;
using test::writeFile;
using testing::ElementsAre;

using ItemOperationsTest = test::CatalogTest;

TEST(LockStateTest, ThatBecomesDueDuringTheLookIsLookedAtOnceMore) {
  LockState state;
  state.becomeDue();
  EXPECT_EQ(state.value([&] { return state.becomeDue(), Off; }), Off);
  EXPECT_EQ(state.value([] { return On; }), On);
  EXPECT_EQ(state.value([] { return Mixed; }), On) << "due no more";
}

TEST_F(ItemOperationsTest, TrashTakesCompanionsAndLinksToNothing) {
  writeFile(home_ / "a.plist", "a");
  writeFile(home_ / "a.plist.lockfile", "");
  writeFile(home_ / "gone.lockfile", "");
  std::filesystem::create_symlink("/nowhere", home_ / "link");
  const auto item = itemWith({home_ / "a.*st", home_ / "gone", home_ / "link", home_ / "none"});
  item->setLocked(On);

  EXPECT_EQ(item->trash(report_), 4);
  EXPECT_EQ(item->locked(), Off);
  EXPECT_THAT(logged(), ElementsAre("Trashing file " + (home_ / "a.plist"), "Trashing file " + (home_ / "link")));
  for (const char* name : {"a.plist", "a.plist.lockfile", "gone.lockfile", "link"}) {
    EXPECT_TRUE(exists(inTrash(name))) << name;
    EXPECT_FALSE(exists(home_ / name)) << name;
  }
}

TEST_F(ItemOperationsTest, TrashCountsACompanionOnceThatThePatternMatchesToo) {
  for (const char* name : {"Cut", "Cut.lockfile"}) writeFile(home_ / (std::string("Macros/") + name), name);
  EXPECT_EQ(itemWith({home_ / "Macros/*"})->trash(report_), 2);
  EXPECT_EQ(report_.files().size(), 2U);
  EXPECT_THAT(logged(), ElementsAre("Trashing file " + (home_ / "Macros/Cut")));
}

TEST_F(ItemOperationsTest, TrashGoesOnAfterAFailureAndTakesTickedUsersOnly) {
  for (const char* name : {"own", "on", "mixed"}) writeFile(home_ / name, name);
  const auto item = itemWith({home_ / "own"});
  for (const char* name : {"on", "mixed"}) item->addUser(itemWith({home_ / name}));
  item->users()[0]->setSelected(On);
  item->users()[1]->setSelected(Mixed);
  files_.fail(Operation::Trash, std::errc::io_error);
  EXPECT_EQ(item->trash(report_), 1);
  ASSERT_EQ(report_.files().size(), 2U);
  EXPECT_EQ(report_.files()[0].path, home_ / "own");
  EXPECT_EQ(report_.files()[0].cause->code, std::errc::io_error);
  EXPECT_EQ(report_.files()[1].place, inTrash("on"));
  EXPECT_TRUE(exists(home_ / "own"));
  EXPECT_FALSE(exists(home_ / "on"));
  EXPECT_TRUE(exists(home_ / "mixed"));
}

TEST_F(ItemOperationsTest, AvidUsersAreTheFoldersOfTheUsersFolder) {
  const std::string live = machine_ / "Users/Shared/AvidMediaComposer/Avid Users";
  for (const char* name : {"/AvidWebCache", "/anna", "/ben%@", "/c*"}) makeFolders(live + name);
  writeFile(live + "/Site", "");
  writeFile(live + "/anna/MCState", "");
  metadata_.locked = {live + "/anna/MCState"};
  const auto item = itemWith({}, false);
  item->setSelected(Mixed);
  item->populateAvidUsersInBackup({});
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

}  // namespace
}  // namespace vantory
