#include "backups/ui/QWBackupOutlineController.h"
#include "backups/ui/QWRestoreOutlineController.h"
#include "tasks/ui/QWLockOutlineController.h"
#include "tasks/ui/QWTrashTableController.h"
#include "tests/panes/PaneTest.h"

namespace vantory::test {
namespace {

// The names of all rows, each below the one it belongs to.
std::string rowsOfOutline(OutlineDelegate& pane, const OutlineItemPointer& item = nullptr) {
  std::string text;
  for (std::size_t i = 0; i < pane.numberOfChildrenOfItem(item); ++i) {
    const OutlineItemPointer row = pane.child(i, item);
    text += nameOfRow(row);
    EXPECT_EQ(pane.isItemExpandable(row), pane.numberOfChildrenOfItem(row) > 0) << text;
    const std::string below = rowsOfOutline(pane, row);
    if (!below.empty()) text += "(" + below + ")";
    text += " ";
  }
  return text;
}

class TrashPaneTest : public PaneTest {
 protected:
  TrashPaneTest() {
    setTwoApps();
    pane_.reload();
  }
  QWTrashTableController pane_{outline_, button_};
};

TEST_F(TrashPaneTest, ShowsApplicationsAndAvidUsersOnly) {
  EXPECT_EQ(rowsOfOutline(pane_), "Editor Avid Media Composer(anna ben ) ");
  OutlineCell cell;
  pane_.willDisplayCell(cell, "selected", editor_);
  EXPECT_EQ(cell.title, "Editor");
  EXPECT_EQ(cell.icon, "editor.png");
  EXPECT_EQ(pane_.child(7, nullptr), nullptr);
}

TEST_F(TrashPaneTest, TicksReachWhatIsBelowAndAbove) {
  pane_.setObjectValue(Off, "selected", avidItem_->users()[0]);
  EXPECT_EQ(avid_->selected(), Mixed);
  EXPECT_EQ(outline_.headerState, Mixed);
  EXPECT_THAT(outline_.reloadedItems, testing::Contains(OutlineItemPointer(avid_)));
  pane_.setObjectValue(Mixed, "selected", avid_);  // a click on a mixed box ticks it
  EXPECT_EQ(avid_->selected(), On);
  EXPECT_EQ(avidItem_->users()[0]->selected(), On);
  pane_.setObjectValue(Off, "selected", editor_);
  EXPECT_EQ(editor_->children()[1]->selected(), Off);
}

class BackupPaneTest : public PaneTest {
 protected:
  BackupPaneTest() {
    setTwoApps();
    pane_.reload();
  }
  FakeOutline restoreOutline_;
  FakeButton defaultCommand_;
  QWRestoreOutlineController restore_{{restoreOutline_, defaultCommand_, spinner_, *this}};
  QWBackupOutlineController pane_{{outline_, button_, spinner_, *this, restore_}};
};

TEST_F(BackupPaneTest, ShowsEverythingThatCanBeChosen) {
  EXPECT_EQ(rowsOfOutline(pane_), "Editor(Preferences Layouts ) Avid Media Composer(Preferences(anna ben ) ) ");
}

TEST_F(BackupPaneTest, AnApplicationTickedInPartIsEnoughToBackUp) {
  pane_.mouseDownInHeaderOfTableColumn("name");
  EXPECT_EQ(outline_.headerState, Off);
  EXPECT_FALSE(button_.enabled);
  pane_.setObjectValue(On, "name", editor_->children()[0]);
  EXPECT_EQ(outline_.headerState, Off) << "no application is ticked as a whole";
  EXPECT_TRUE(button_.enabled);
}

class LockPaneTest : public PaneTest {
 protected:
  LockPaneTest() {
    setTwoApps();
    pane_.reload();
    finishWork();
  }
  void lock(int state, const OutlineItemPointer& row) {
    pane_.setObjectValue(state, "lock", row);
    finishWork();
  }
  int shownState(const OutlineItemPointer& row) { return std::get<int>(pane_.objectValueForTableColumn("lock", row)); }
  QWLockOutlineController pane_{outline_, spinner_};
};

TEST_F(LockPaneTest, LocksWhatARowStandsFor) {
  lock(On, editor_->children()[0]);
  EXPECT_TRUE(metadata_.locked.contains(prefs("editor.plist")));
  EXPECT_EQ(shownState(editor_->children()[0]), On);
  EXPECT_EQ(shownState(editor_), Mixed);
  lock(Mixed, editor_);
  EXPECT_TRUE(metadata_.locked.contains(prefs("editor.layout")));
  EXPECT_EQ(shownState(editor_), On);
  // Clicks that come while files are being changed wait for their turn.
  pane_.setObjectValue(Off, "lock", editor_);
  EXPECT_EQ(shownState(editor_), Off) << "at once";
  EXPECT_TRUE(spinner_.isTurning);
  pane_.setObjectValue(On, "lock", avidItem_->users()[1]);
  finishWork();
  EXPECT_FALSE(spinner_.isTurning);
  EXPECT_THAT(metadata_.locked, ElementsAre(avidFile("ben")));
  EXPECT_THAT(alerts_, IsEmpty());
}

TEST_F(LockPaneTest, WhatCouldNotBeLockedIsToldAndShown) {
  metadata_.lockAnswer = Error{std::errc::not_supported, "no such flag here"};
  lock(On, editor_);
  EXPECT_THAT(alerts_, ElementsAre("Not everything could be locked"));
  EXPECT_EQ(shownState(editor_), Off);
}

TEST_F(LockPaneTest, ARowThatCannotBeLockedIgnoresClicks) {
  lock(On, avidItem_);
  EXPECT_TRUE(metadata_.locked.empty());
  EXPECT_EQ(shownState(avidItem_), Off);
  OutlineCell cell;
  pane_.willDisplayCell(cell, "lock", avidItem_);
  EXPECT_FALSE(cell.enabled);
  lock(On, avidItem_->users()[0]);
  EXPECT_EQ(metadata_.locked.size(), 1U);
  EXPECT_EQ(shownState(avidItem_->users()[0]), On);
}

TEST_F(LockPaneTest, LooksAgainWhenItIsShown) {
  metadata_.locked.insert(prefs("editor.plist"));
  EXPECT_EQ(shownState(editor_), Off);
  NotificationCenter::shared().post("QWVantoryLockTabSwitch");
  finishWork();
  EXPECT_EQ(shownState(editor_), Mixed);
}

}  // namespace
}  // namespace vantory::test
