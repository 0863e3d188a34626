// The Hotkeys pane of the settings window.
#pragma once

#include <QWidget>

class QLabel;
class QPushButton;

namespace vantory {

class QWShortcutKeyTableDelegate;
class QWShortcutKeyTableview;

class QWShortcutKeyContainerView : public QWidget {
 public:
  // The delegate outlives it.
  explicit QWShortcutKeyContainerView(QWShortcutKeyTableDelegate& delegate);

 private:
  QWidget* makeButtons(QWShortcutKeyTableDelegate& delegate);
  void showSelection();

  QWShortcutKeyTableview* const table_;
  QLabel* const warning_;
  QPushButton* const edit_;
  QPushButton* const clear_;
};

}  // namespace vantory
