// What the tests of widgets stand on: rows made up for them, and patience.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QPushButton>
#include <QTest>
#include <functional>
#include <string>
#include <vector>

#include "backups/ui/OutlineView.h"
#include "window/dialogs/AlertDialog.h"

namespace vantory::test {

struct FakeRow : OutlineItem {
  explicit FakeRow(std::string rowTitle) : title(std::move(rowTitle)), name(title) {}
  std::string identity() const override { return name; }

  std::shared_ptr<FakeRow> add(const std::string& rowTitle) {
    rows.push_back(std::make_shared<FakeRow>(rowTitle));
    return rows.back();
  }

  std::string title;
  std::string name;  // its identity
  State state = Off;
  bool hasCheckBox = true;
  bool enabled = true;
  bool editable = false;
  std::vector<std::shared_ptr<FakeRow>> rows;
};

// A tree of FakeRows; records what it is told.
class FakeRows : public OutlineDelegate, public OutlineActions {
 public:
  using Change = std::pair<std::string, ObjectValue>;  // a row's title and its new value

  std::size_t numberOfChildrenOfItem(const OutlineItemPointer& item) override { return row(item).rows.size(); }
  OutlineItemPointer child(std::size_t index, const OutlineItemPointer& ofItem) override {
    return row(ofItem).rows[index];
  }
  std::vector<OutlineItemPointer> childrenOfItem(const OutlineItemPointer& item) override {
    ++listsTold;
    return OutlineDelegate::childrenOfItem(item);
  }
  bool isItemExpandable(const OutlineItemPointer& item) override { return !row(item).rows.empty(); }
  ObjectValue objectValueForTableColumn(const std::string& column, const OutlineItemPointer& byItem) override {
    if (column != "name") return std::string("detail");
    const FakeRow& asked = row(byItem);
    return asked.hasCheckBox ? ObjectValue(asked.state) : ObjectValue(asked.title);
  }
  void setObjectValue(const ObjectValue& value, const std::string&, const OutlineItemPointer& byItem) override {
    changes.emplace_back(row(byItem).title, value);
    if (const State* state = std::get_if<State>(&value)) row(byItem).state = *state;
  }
  void willDisplayCell(OutlineCell& cell, const std::string& column, const OutlineItemPointer& item) override {
    if (column != "name") return;
    cell.title = row(item).title;
    cell.enabled = row(item).enabled;
    cell.editable = row(item).editable;
  }

  void mouseDownInHeaderOfTableColumn(const std::string&) override {}
  void didClickTableColumn(const std::string&) override {}
  void selectionDidChange() override { ++selectionChanges; }
  void doubleClick() override { ++doubleClicks; }
  bool keyUp(OutlineKey key) override {
    if (key == OutlineKey::Delete) ++deletions;
    return key == OutlineKey::Delete;
  }

  FakeRow root{"root"};
  std::vector<Change> changes;
  int listsTold = 0;
  int deletions = 0;
  int selectionChanges = 0;
  int doubleClicks = 0;

 private:
  FakeRow& row(const OutlineItemPointer& item) { return item ? static_cast<FakeRow&>(*item) : root; }
};

// Serves events until the condition holds; false when it does not within half a minute.
inline bool eventually(const std::function<bool()>& condition) {
  return QTest::qWaitFor(condition, 30000);
}

// Nothing where no such window is shown.
template <class T>
T* visibleWindow() {
  for (QWidget* widget : QApplication::topLevelWidgets())
    if (auto* window = dynamic_cast<T*>(widget); window && window->isVisible()) return window;
  return nullptr;
}

inline QPushButton* button(QWidget& window, const QString& title) {
  for (auto* each : window.findChildren<QPushButton*>())
    if (each->text().remove('&') == title) return each;
  return nullptr;
}

// Answers the alert that comes up, and tells its message.
inline QString answer(const QString& title) {
  if (!eventually([] { return visibleWindow<AlertDialog>() != nullptr; })) return "no alert";
  AlertDialog& alert = *visibleWindow<AlertDialog>();
  const QString message = alert.accessibleName();
  QTest::mouseClick(button(alert, title), Qt::LeftButton);
  return message;
}

}  // namespace vantory::test
