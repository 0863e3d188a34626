// What all panes look like: a sentence, the outline, and a row of buttons below.
#pragma once

#include <QKeySequence>
#include <QList>
#include <QWidget>
#include <vector>

#include "window/outline/OutlineModel.h"

class QAction;
class QHBoxLayout;
class QMenu;

namespace vantory {

class Command;
class QWOutlineView;
class Spinner;

class OutlinePane : public QWidget {
 public:
  // The name is what the outline is called when it is read out.
  OutlinePane(const QString& caption, std::vector<OutlineColumn> columns, const QString& name);

  QWOutlineView& outline() { return *outline_; }
  Spinner& spinner() { return *spinner_; }
  // Adds the pane's commands to a menu.
  void addCommandsTo(QMenu& menu) const;

 protected:
  // A command of the pane, in the order of its menu.
  Command& addCommand(const QString& title, const QKeySequence& shortcut = {});
  void addSeparator();
  // A button at the left end of the row below, or the main one at its right end.
  void addButton(Command& command);
  void addMainButton(Command& command);

 private:
  QWOutlineView* const outline_;
  Spinner* const spinner_;
  QHBoxLayout* const buttons_;
  int leadingButtons_ = 0;
  QList<QAction*> commands_;  // null stands for a separator
};

}  // namespace vantory
