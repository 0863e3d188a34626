#include <set>

#include "catalog/Catalog.h"
#include "tests/catalog/CatalogFixture.h"

namespace vantory {
namespace {

using testing::ElementsAre;

using BuiltInCatalogTest = test::CatalogTest;

TEST_F(BuiltInCatalogTest, HoldsEveryApplicationAndItem) {
  const AppList apps = buildCatalog();
  EXPECT_EQ(apps.size(), 17u);
  std::vector<std::string> unlockable;
  std::multiset<std::string> keys;
  for (const auto& app : apps)
    for (const auto& item : app->children()) {
      keys.insert(item->key());
      EXPECT_EQ(prefItemForKey(apps, item->key()), item);
      EXPECT_EQ(item->parent(), app);
      if (!item->lockable()) unlockable.push_back(item->key());
    }
  EXPECT_EQ(keys.size(), 47u);
  EXPECT_THAT(unlockable, ElementsAre("avidPrefs", "premiereWorkspaces", "aeWorkspaces"));
  EXPECT_EQ(prefItemForKey(apps, "FCPPREFS"), nullptr);
  EXPECT_THAT(prefItemForKey(apps, "premierePrefs")->files(),
              ElementsAre(home_ / "Library/Application Support/Adobe/Premiere Pro/*/Adobe Premiere Pro Prefs",
                          home_ / "Library/Preferences/com.Adobe.Premiere Pro.*.plist"));
}

TEST_F(BuiltInCatalogTest, AsksTheDiskOnceForEachFile) {
  (void)buildCatalog();
  EXPECT_LE(files_.calls(test::Operation::Info), 60);
  EXPECT_LE(files_.calls(test::Operation::List), 30);
}

TEST_F(BuiltInCatalogTest, NeverLeadsOutsideAHome) {
  fakes_.users.process.reset();
  EXPECT_THAT(prefItemForKey(buildCatalog(), "fcpPrefs")->files(), ElementsAre());
  fakes_.users.process = User{"anna", 1000, 1000, "/tmp/*"};
  EXPECT_THAT(prefItemForKey(buildCatalog(), "fcpPrefs")->files(), ElementsAre());
}

}  // namespace
}  // namespace vantory
