#include <gtest/gtest.h>

#include "catalog/QWApp.h"

namespace vantory {
namespace {

using States = std::vector<int>;

std::shared_ptr<QWApp> appWithItems(const States& states) {
  auto app = QWApp::appWithName("App", "App.png", "com.example.app");
  for (const int state : states) app->addItemWithName("Preferences", "prefs", true, {})->setSelected(state);
  app->updateSelectionStatus();
  return app;
}

TEST(Records, MixedItemsCountAsOnButNotAmongPreferences) {
  for (const auto& [items, all, preferences] : {std::tuple(States{}, Off, Off),
                                                {States{1, 1}, On, On},
                                                {States{1, 0}, Mixed, Mixed},
                                                {States{1, -1, 1}, On, Mixed}}) {
    const auto app = appWithItems(items);
    EXPECT_EQ(app->selected(), all) << testing::PrintToString(items);
    app->addItemWithName("Layouts", "layouts", true, {})->setSelected(On);
    app->updateSelectionStatusForPrefs();
    EXPECT_EQ(app->selected(), preferences) << testing::PrintToString(items);
  }
}

}  // namespace
}  // namespace vantory
