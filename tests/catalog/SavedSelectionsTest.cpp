#include "catalog/SavedSelections.h"

#include "services/QWUserDefaults.h"
#include "tests/catalog/CatalogFixture.h"

namespace vantory {
namespace {

using testing::ElementsAre;

using SavedSelectionsTest = test::CatalogTest;

TEST_F(SavedSelectionsTest, TicksComeBack) {
  for (const char* user : {"anna", "ben\xff"})
    test::makeFolders(machine_ / (std::string("Users/Shared/AvidMediaComposer/Avid Users/") + user));
  const auto selected = [](const AppList& apps, const char* key) { return prefItemForKey(apps, key)->selected(); };
  const AppList ticked = buildCatalog();
  (void)logged();
  loadAppSelections(ticked);  // never saved: everything stays ticked
  EXPECT_THAT(logged(), ElementsAre("Loading app selections"));

  for (const char* key : {"fcpPrefs", "motionKeyLayout", "avidPrefUseranna"})
    prefItemForKey(ticked, key)->setSelected(Off);
  for (const auto& app : ticked) app->updateSelectionStatus();
  ticked[7]->setSelected(Off);  // an application that is off saves none of its items
  saveAppSelections(ticked);
  EXPECT_THAT(logged(), ElementsAre("Saving app selections", "App selections saved"));

  const AppList loaded = buildCatalog();
  loadAppSelections(loaded);
  EXPECT_EQ(selected(loaded, "fcpPrefs"), Off);
  EXPECT_EQ(selected(loaded, "fcpButton"), On);
  EXPECT_EQ(selected(loaded, "motionPrefs"), Off);
  EXPECT_EQ(selected(loaded, "avidPrefUseranna"), Off);
  EXPECT_EQ(selected(loaded, "avidPrefUserben\xff"), On);
  EXPECT_EQ(selected(loaded, "avidPrefs"), Mixed);
  EXPECT_EQ(loaded[3]->selected(), Mixed);

  QWUserDefaults::standardUserDefaults().setObject("selectedPrefs", PropertyListArray{"avidPrefs", 7, "gone"});
  loadAppSelections(loaded);
  EXPECT_EQ(selected(loaded, "avidPrefs"), Off);
  EXPECT_EQ(loaded[3]->selected(), Off);
}

}  // namespace
}  // namespace vantory
