// The tree inside an outline view: keys, clicks and the menu of a row.
#pragma once

#include <QTreeView>
#include <functional>

#include "backups/ui/OutlineView.h"

class QMenu;

namespace vantory {

class OutlineTree : public QTreeView {
 public:
  explicit OutlineTree(QWidget* parent);

  // A key was let go again that had been pressed here, and no text was being edited. True when it was dealt with.
  std::function<bool(OutlineKey)> onKeyUp;
  // A key was pressed; true when it was bound to something.
  std::function<bool(QChar)> onKeyDown;
  std::function<void()> onDoubleClick;
  // Of each row; may be null.
  QMenu* menu = nullptr;

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void keyReleaseEvent(QKeyEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;

 private:
  bool toggleCheckBox();
  QModelIndex indexForMenu(const QContextMenuEvent& event) const;

  int pressedKey_ = 0;
};

}  // namespace vantory
