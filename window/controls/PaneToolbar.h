// The toolbar by which a window's panes are chosen.
#pragma once

#include <QActionGroup>
#include <QToolBar>
#include <functional>

namespace vantory {

class PaneToolbar : public QToolBar {
 public:
  explicit PaneToolbar(QWidget* parent);

  // The symbol is the name of a drawing. Ctrl and the pane's number, from 1 in the order of adding, choose it too.
  void addPane(const QString& title, const QString& symbol, std::function<void()> choose);
  // An item that is no pane.
  QAction* addItem(const QString& title, const QString& symbol);
  // Of which one is checked.
  QActionGroup& panes() { return panes_; }

 protected:
  bool event(QEvent* event) override;

 private:
  QActionGroup panes_;
};

}  // namespace vantory
