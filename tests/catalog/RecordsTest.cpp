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

std::shared_ptr<QWPrefItem> itemWithUsers(const States& states) {
  auto item = std::make_shared<QWPrefItem>("Preferences", "avidPrefs", false, std::vector<std::string>());
  for (const int state : states) {
    item->addUser(item->copy());
    item->users().back()->setSelected(state);
  }
  item->updateSelectionStatus();
  return item;
}

TEST(Records, MixedItemsCountAsOnButNotAmongPreferences) {
  for (const auto& [items, all, preferences] : {std::tuple(States{}, Off, Off),
                                                {States{0, 0}, Off, Off},
                                                {States{1, 1}, On, On},
                                                {States{1, 0}, Mixed, Mixed},
                                                {States{1, -1, 1}, On, Mixed},
                                                {States{-1, 0}, Mixed, Mixed}}) {
    const auto app = appWithItems(items);
    EXPECT_EQ(app->selected(), all) << testing::PrintToString(items);
    app->addItemWithName("Layouts", "layouts", true, {})->setSelected(On);
    app->updateSelectionStatusForPrefs();
    EXPECT_EQ(app->selected(), preferences) << testing::PrintToString(items);
  }
}

TEST(Records, UsersDecideForTheirItemAndInheritFromAbove) {
  EXPECT_EQ(itemWithUsers({0, 0})->selected(), Off);
  EXPECT_EQ(itemWithUsers({1, -1})->selected(), On);
  const auto item = itemWithUsers({1, 0});
  EXPECT_EQ(item->selected(), Mixed);
  const auto app = appWithItems({});
  app->addItem(item);
  app->setSelected(Mixed);
  item->inheritSelectionFromParent();
  for (const auto& user : item->users()) EXPECT_EQ(user->selected(), On);
}

TEST(Records, LockStateOfAnApplicationLeavesOutWhatCannotBeLocked) {
  for (const auto& [locked, state] : {std::pair(States{}, Off), {{1, 1}, On}, {{0, 1}, Mixed}, {{-1}, Mixed}}) {
    const auto app = appWithItems(locked);
    for (std::size_t i = 0; i < locked.size(); ++i) app->children()[i]->setLocked(locked[i]);
    app->addItemWithName("Workspaces", "workspaces", false, {})->setLocked(Mixed);
    app->updateLockStatus(false);
    EXPECT_EQ(app->locked(), state) << testing::PrintToString(locked);
  }
}

TEST(Records, CopiesShareWhatTheyHoldButNotTheirPlace) {
  const auto app = appWithItems({On, Off});
  EXPECT_EQ(app->copy()->children(), app->children());
  EXPECT_EQ(app->copy()->selected(), Mixed);
  EXPECT_EQ(app->children()[0]->parent(), app);
  EXPECT_FALSE(app->children()[0]->copy()->parent());
}

}  // namespace
}  // namespace vantory
