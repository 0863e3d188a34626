#include "backups/ui/QWBackupOutlineController.h"
#include "backups/ui/QWRestoreOutlineController.h"
#include "backups/ui/Surveyor.h"
#include "tasks/ui/QWLockOutlineController.h"
#include "tasks/ui/QWTrashTableController.h"
#include "tests/backups/ui/PaneTest.h"

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

class TickingTest : public PaneTest {
 protected:
  TickingTest() { setTwoApps(); }
};

TEST_F(TickingTest, TheTrashPaneTicksApplicationsAndAvidUsers) {
  QWTrashTableController pane{outline_, button_};
  pane.reload();
  EXPECT_EQ(rowsOfOutline(pane), "Editor Avid Media Composer(anna ben ) ");
  EXPECT_EQ(pane.child(7, nullptr), nullptr);
  OutlineCell cell;
  pane.willDisplayCell(cell, "selected", rowOf(pane, editor_));
  EXPECT_EQ(cell.title, "Editor");

  pane.setObjectValue(Off, "selected", rowOf(pane, avidItem_->users()[0]));
  EXPECT_EQ(avid_->selected(), Mixed);
  EXPECT_EQ(outline_.headerState, Mixed);
  EXPECT_EQ(rowAs<QWApp>(outline_.reloadedItems[0]), avid_);
  pane.setObjectValue(Mixed, "selected", rowOf(pane, avid_));  // a click on a mixed box ticks it
  EXPECT_EQ(avid_->selected(), On);
  EXPECT_EQ(avidItem_->users()[0]->selected(), On);
  pane.setObjectValue(Off, "selected", rowOf(pane, editor_));
  EXPECT_EQ(editor_->children()[1]->selected(), Off);
}

TEST_F(TickingTest, ThePanesTellWhatThereIs) {
  QWTrashTableController trash{outline_, button_};
  QWLockOutlineController lock{outline_, spinner_};
  const auto cell = [](OutlineDelegate& pane, const char* column, const RecordRow::Record& record) {
    const ObjectValue value = pane.objectValueForTableColumn(column, rowOf(pane, record));
    return std::holds_alternative<std::string>(value) ? std::get<std::string>(value) : "";
  };
  const auto isDimmed = [](OutlineDelegate& pane, const RecordRow::Record& record) {
    OutlineCell shown;
    pane.willDisplayCell(shown, "files", rowOf(pane, record));
    return shown.dimmed;
  };
  EXPECT_EQ(cell(trash, "files", editor_), "") << "nobody has looked yet";
  EXPECT_FALSE(isDimmed(trash, editor_));
  Surveyor::shared().start();
  std::filesystem::remove(prefs("editor.plist"));
  NotificationCenter::shared().post("QWVantoryTrashTabSwitch");
  EXPECT_FALSE(BackgroundThreads::shared().isWorking()) << "the program may be left meanwhile";
  finishWork();
  EXPECT_EQ(cell(trash, "files", editor_), "none") << "only its preferences would be trashed";
  EXPECT_TRUE(isDimmed(trash, editor_));
  EXPECT_EQ(cell(trash, "size", avidItem_->users()[0]), "4 B");
  EXPECT_EQ(cell(lock, "files", editor_), "1");
  EXPECT_EQ(cell(lock, "kept", editor_), "no");
  EXPECT_EQ(outline_.remark + button_.remark, "");
  trash.setObjectValue(Off, "selected", rowOf(trash, avid_));
  EXPECT_EQ(button_.remark, "Nothing of what is ticked is on disk.");

  std::filesystem::remove_all(home_ / "Library");
  std::filesystem::remove_all(machine_ / "Users");
  Surveyor::shared().renew();
  Surveyor::shared().renew();
  finishWork();
  EXPECT_THAT(outline_.remark, HasSubstr("was found. Vantory looked in " + (home_ / "Library") + " and "));
}

TEST_F(TickingTest, InTheBackupPaneAnApplicationTickedInPartIsEnough) {
  QWRestoreOutlineController restore{{outline_, button_, spinner_, *this}};
  QWBackupOutlineController pane{{outline_, button_, spinner_, *this, restore}};
  pane.reload();
  EXPECT_EQ(rowsOfOutline(pane), "Editor(Preferences Layouts ) Avid Media Composer(Preferences(anna ben ) ) ");
  pane.mouseDownInHeaderOfTableColumn("name");
  EXPECT_EQ(outline_.headerState, Off);
  EXPECT_FALSE(button_.enabled);
  pane.setObjectValue(On, "name", rowOf(pane, editor_->children()[0]));
  EXPECT_EQ(outline_.headerState, Off) << "no application is ticked as a whole";
  EXPECT_TRUE(button_.enabled);
}

TEST_F(TickingTest, TheLockPaneShowsWhatIsLockedNotWhatWasClicked) {
  QWLockOutlineController pane{outline_, spinner_};
  pane.reload();
  finishWork();
  using Record = RecordRow::Record;
  const auto click = [&](State state, const Record& record) {
    pane.setObjectValue(state, "lock", rowOf(pane, record));
  };
  const auto lock = [&](State state, const Record& record) {
    click(state, record);
    finishWork();
  };
  const auto shown = [&](const Record& record) {
    return std::get<State>(pane.objectValueForTableColumn("lock", rowOf(pane, record)));
  };
  lock(On, avidItem_);
  EXPECT_TRUE(metadata_.locked.empty()) << "it cannot be locked";
  EXPECT_EQ(shown(avidItem_), Off);
  OutlineCell cell;
  pane.willDisplayCell(cell, "lock", rowOf(pane, avidItem_));
  EXPECT_FALSE(cell.enabled);

  lock(On, editor_->children()[0]);
  EXPECT_TRUE(metadata_.locked.contains(prefs("editor.plist")));
  EXPECT_EQ(shown(editor_->children()[0]), On);
  EXPECT_EQ(shown(editor_), Mixed);
  lock(Mixed, editor_);
  EXPECT_TRUE(metadata_.locked.contains(prefs("editor.layout")));
  EXPECT_EQ(shown(editor_), On);
  // Clicks that come while files are being changed wait for their turn.
  click(Off, editor_);
  EXPECT_EQ(shown(editor_), Off) << "at once";
  EXPECT_TRUE(spinner_.isTurning);
  lock(On, avidItem_->users()[1]);
  EXPECT_FALSE(spinner_.isTurning);
  EXPECT_THAT(metadata_.locked, ElementsAre(avidFile("ben")));
  EXPECT_THAT(alerts_, IsEmpty());

  metadata_.lockAnswer = Error{std::errc::not_supported, "no such flag here"};
  lock(On, editor_);
  EXPECT_THAT(alerts_, ElementsAre("Not everything could be locked"));
  EXPECT_EQ(shown(editor_), Off);
  metadata_.locked.insert(prefs("editor.plist"));
  editor_->updateLockStatus();
  EXPECT_EQ(shown(editor_), Off) << "looking must not stop the window";
  NotificationCenter::shared().post("QWVantoryLockTabSwitch");
  finishWork();
  EXPECT_EQ(shown(editor_), Mixed) << "it looks again when it is shown";
}

TEST_F(TickingTest, AMixedRowOfWhichNothingIsLeftToLockIsUnlocked) {
  QWLockOutlineController pane{outline_, spinner_};
  writeFile(prefs("editor.one"), "");
  const auto item = editor_->addItemWithName("Caches", "editorCaches", true, {prefs("editor.one"), prefs("missing")});
  const auto stateAfterClick = [&](const RecordRow::Record& record) {
    const OutlineItemPointer row = rowOf(pane, record);
    pane.setObjectValue(On, "lock", row);
    finishWork();
    return std::get<State>(pane.objectValueForTableColumn("lock", row));
  };
  EXPECT_EQ(stateAfterClick(item), Mixed);
  EXPECT_THAT(metadata_.locked, ElementsAre(prefs("editor.one")));
  EXPECT_EQ(stateAfterClick(item), Off);
  EXPECT_THAT(metadata_.locked, IsEmpty());

  EXPECT_EQ(stateAfterClick(item), Mixed);
  EXPECT_EQ(stateAfterClick(editor_), Mixed) << "the other items were not locked yet";
  EXPECT_EQ(metadata_.locked.size(), 3U);
  EXPECT_EQ(stateAfterClick(editor_), Off);
  EXPECT_THAT(metadata_.locked, IsEmpty());
}

}  // namespace
}  // namespace vantory::test
