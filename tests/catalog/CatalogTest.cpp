#include <set>

#include "catalog/SavedSelections.h"
#include "tests/catalog/CatalogFixture.h"

namespace vantory {
namespace {

using testing::ElementsAre;

using BuiltInCatalogTest = test::CatalogTest;

TEST_F(BuiltInCatalogTest, HoldsEveryItemOnce) {
  std::set<std::string> keys, unlockable;
  for (const auto& app : buildCatalog())
    for (const auto& item : app->children()) {
      keys.insert(item->key());
      if (!item->lockable()) unlockable.insert(item->key());
    }
  EXPECT_EQ(keys.size(), 47u);
  EXPECT_THAT(unlockable, ElementsAre("aeWorkspaces", "avidPrefs", "premiereWorkspaces"));
}

TEST_F(BuiltInCatalogTest, TicksComeBack) {
  for (const char* user : {"anna", "ben\xff"})
    test::makeFolders(machine_ / (std::string("Users/Shared/AvidMediaComposer/Avid Users/") + user));
  const auto selected = [](const AppList& apps, const char* key) { return prefItemForKey(apps, key)->selected(); };
  const AppList ticked = buildCatalog();

  for (const char* key : {"fcpPrefs", "motionKeyLayout", "avidPrefUseranna"})
    prefItemForKey(ticked, key)->setSelected(Off);
  for (const auto& app : ticked) app->updateSelectionStatus();
  ticked[7]->setSelected(Off);  // an application that is off saves none of its items
  saveAppSelections(ticked);

  const AppList loaded = buildCatalog();
  loadAppSelections(loaded);
  for (const char* key : {"fcpPrefs", "motionPrefs", "avidPrefUseranna"}) EXPECT_EQ(selected(loaded, key), Off) << key;
  EXPECT_EQ(selected(loaded, "avidPrefUserben\xff"), On);
  EXPECT_EQ(selected(loaded, "avidPrefs"), Mixed);
}

}  // namespace
}  // namespace vantory
