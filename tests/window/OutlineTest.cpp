#include <QContextMenuEvent>
#include <QLineEdit>
#include <QMenu>
#include <algorithm>
#include <map>

#include "tests/window/WindowTest.h"
#include "window/appearance/SystemColours.h"
#include "window/outline/OutlineTree.h"
#include "window/outline/QWOutlineView.h"

namespace vantory::test {

namespace {

class OutlineTest : public testing::Test {
 protected:
  OutlineTest() {
    app_ = rows_.root.add("Editor");
    item_ = app_->add("Preferences");
    app_->add("Layouts");
    other_ = rows_.root.add("Other");
    view_.setDelegate(&rows_, &rows_);
    view_.resize(500, 300);
    view_.show();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&view_));
    view_.setFocus();
  }

  OutlineTree& tree() { return view_.tree(); }
  QModelIndex cell(const OutlineItemPointer& item) {
    return dynamic_cast<OutlineModel&>(*tree().model()).indexOf(item).siblingAtColumn(0);
  }
  QPoint inText(const OutlineItemPointer& item) { return tree().visualRect(cell(item)).center(); }
  QPoint inCheckBox(const OutlineItemPointer& item) {
    const QRect area = tree().visualRect(cell(item));
    return {area.left() + 10, area.center().y()};
  }
  void click(const QPoint& place) { QTest::mouseClick(tree().viewport(), Qt::LeftButton, {}, place); }
  void key(Qt::Key key) { QTest::keyClick(&tree(), key); }
  bool isOpen(const OutlineItemPointer& item) { return tree().isExpanded(cell(item)); }

  FakeRows rows_;
  std::shared_ptr<FakeRow> app_, item_, other_;
  QWOutlineView view_{{{.identifier = "name", .title = "Name"}, {.identifier = "size", .title = "Size"}}, "Rows"};
};

TEST_F(OutlineTest, ClicksOnCheckBoxesTick) {
  click(inCheckBox(app_));
  click(inCheckBox(app_));
  EXPECT_EQ(rows_.changes, (std::vector<FakeRows::Change>{{"Editor", On}, {"Editor", Off}}));
  app_->state = Mixed;
  other_->enabled = false;
  view_.reloadData();
  EXPECT_EQ(cell(app_).data(Qt::CheckStateRole).toInt(), Qt::PartiallyChecked);
  click(inCheckBox(app_));
  EXPECT_EQ(rows_.changes.back(), FakeRows::Change("Editor", On));
  click(inCheckBox(other_));
  EXPECT_EQ(rows_.changes.size(), 3u) << "a greyed check box was used";
  click(inText(other_));
  EXPECT_EQ(view_.selectedItem(), other_) << "its row can still be selected";
}

TEST_F(OutlineTest, TextIsEditedInPlace) {
  other_->hasCheckBox = false;
  other_->editable = true;
  view_.reloadData();
  view_.selectItem(other_);
  view_.editSelectedRow();
  auto* editor = tree().viewport()->findChild<QLineEdit*>();
  ASSERT_NE(editor, nullptr);
  QTest::keyClick(editor, Qt::Key_Delete);
  QTest::keyClicks(editor, "Renamed");
  QTest::keyClick(editor, Qt::Key_Return);
  ASSERT_TRUE(eventually([&] { return !rows_.changes.empty(); }));
  EXPECT_EQ(rows_.changes.back(), FakeRows::Change("Other", std::string("Renamed")));
  EXPECT_EQ(rows_.deletions, 0) << "the key belonged to the editor";
  EXPECT_EQ(rows_.doubleClicks, 0);

  // What was not changed is not reported, though the name shown is not the name's bytes.
  rows_.changes.clear();
  other_->title = "bad \xff name";
  view_.reloadData();
  EXPECT_EQ(cell(other_).data().toString(), QStringLiteral("bad \\xff name"));
  view_.editSelectedRow();
  QTest::qWait(20);
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
  QTest::qWait(20);
  EXPECT_TRUE(rows_.changes.empty());
}

TEST_F(OutlineTest, DeleteAndDoubleClickReachTheController) {
  view_.selectItem(other_);
  key(Qt::Key_Delete);
  key(Qt::Key_Backspace);
  EXPECT_EQ(rows_.deletions, 2);
  QTest::keyRelease(&tree(), Qt::Key_Delete);
  EXPECT_EQ(rows_.deletions, 2) << "a key that was pressed elsewhere";
  QTest::mouseDClick(tree().viewport(), Qt::LeftButton, {}, inText(app_));
  EXPECT_EQ(rows_.doubleClicks, 1);
  EXPECT_FALSE(isOpen(app_)) << "a double click is a command and opens nothing";
  QTest::mouseDClick(tree().viewport(), Qt::LeftButton, {}, QPoint(100, tree().viewport()->height() - 5));
  EXPECT_EQ(rows_.doubleClicks, 1) << "below the rows";
}

TEST_F(OutlineTest, TheMenuBelongsToTheRowUnderThePointer) {
  QMenu menu;
  menu.addAction("Something");
  view_.setMenu(&menu);
  view_.selectItem(app_);
  for (const auto& [place, isOnRow] :
       {std::pair(QPoint(100, tree().viewport()->height() - 5), false), {inText(other_), true}}) {
    QContextMenuEvent event(QContextMenuEvent::Mouse, place, tree().viewport()->mapToGlobal(place));
    QApplication::sendEvent(tree().viewport(), &event);
    EXPECT_EQ(menu.isVisible(), isOnRow);
  }
  EXPECT_EQ(view_.selectedItem(), other_);
  menu.close();
}

TEST_F(OutlineTest, OpenRowsAndTheSelectionOutliveAReload) {
  view_.selectItem(item_);
  ASSERT_TRUE(isOpen(app_)) << "selecting opens the rows above";
  const int changes = rows_.selectionChanges;
  rows_.root.rows.insert(rows_.root.rows.begin(), std::make_shared<FakeRow>("New"));
  view_.reloadData();
  EXPECT_TRUE(isOpen(app_));
  EXPECT_EQ(view_.selectedItem(), item_);
  EXPECT_EQ(rows_.selectionChanges, changes) << "nothing changed for the controller";

  // The list is made anew: other items of the same identities, and a row that looks like another.
  rows_.root.rows.clear();
  rows_.root.add("Editor")->name = "Editor of old";
  rows_.root.rows[0]->add("Preferences")->name = "Preferences of old";
  app_ = rows_.root.add("Editor");
  item_ = app_->add("Preferences");
  view_.reloadData();
  EXPECT_TRUE(isOpen(app_));
  EXPECT_FALSE(isOpen(rows_.root.rows[0]));
  EXPECT_EQ(view_.selectedItem(), item_);
  rows_.root.rows.clear();
  view_.reloadData();
  EXPECT_EQ(view_.selectedItem(), nullptr);
  EXPECT_EQ(rows_.selectionChanges, changes + 2);
}

TEST_F(OutlineTest, ReloadingAnItemBringsItsNewChildren) {
  view_.selectItem(item_);
  app_->rows.pop_back();
  app_->add("Plugins");
  app_->add("Presets");
  view_.reloadItem(app_, true);
  EXPECT_EQ(tree().model()->rowCount(cell(app_)), 3);
  EXPECT_EQ(tree().model()->index(2, 0, cell(app_)).data().toString(), QStringLiteral("Presets"));
  const int told = rows_.listsTold;
  view_.reloadItem(std::make_shared<FakeRow>("stranger"), true);
  EXPECT_EQ(rows_.listsTold, told) << "rows that nobody opened were searched";
}

TEST_F(OutlineTest, SelectedRowsCanBeRead) {
  SystemColours colours(nullptr);
  for (const bool dark : {true, false}) {
    colours.setDark(dark);
    QApplication::processEvents();
    tree().setCurrentIndex(cell(app_));
    const QImage row = tree().viewport()->grab(tree().visualRect(cell(app_))).toImage();
    std::map<QRgb, int> counts;
    for (int i = 0; i < row.width() * row.height(); ++i) ++counts[row.pixel(i % row.width(), i / row.width())];
    const QColor ground = std::ranges::max_element(counts, {}, [](const auto& each) { return each.second; })->first;
    EXPECT_EQ(ground.rgb(), QApplication::palette().color(QPalette::Highlight).rgb());
    EXPECT_GE(contrast(ground, QApplication::palette().color(QPalette::HighlightedText)), 4.5) << dark;
  }
}

}  // namespace

}  // namespace vantory::test
