// Makes one button for each pane.
#include "window/controls/PaneToolbar.h"

#include <QEvent>
#include <QLayout>
#include <utility>

#include "window/appearance/Icons.h"

namespace vantory {

namespace {

constexpr int kMargin = 8;

}  // namespace

PaneToolbar::PaneToolbar(QWidget* parent) : QToolBar(QStringLiteral("Panes"), parent), panes_(this) {
  constexpr int kIconSize = 28;
  setMovable(false);
  // The menu that a window gives its toolbars could hide this one for good.
  setContextMenuPolicy(Qt::PreventContextMenu);
  setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
  setIconSize({kIconSize, kIconSize});
  layout()->setSpacing(4);
}

// A style's margins are those of a bar of small icons; it sets them anew with every change.
bool PaneToolbar::event(QEvent* event) {
  const bool isDone = QToolBar::event(event);
  if (event->type() == QEvent::StyleChange || event->type() == QEvent::Polish)
    layout()->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
  return isDone;
}

void PaneToolbar::addPane(const QString& title, const QString& symbol, std::function<void()> choose) {
  QAction* item = addItem(title, symbol);
  item->setCheckable(true);
  item->setActionGroup(&panes_);
  // Ctrl+1 for the first pane, and so on.
  item->setShortcut(QKeySequence(QStringLiteral("Ctrl+%1").arg(panes_.actions().size())));
  connect(item, &QAction::triggered, this, [choose = std::move(choose)] { choose(); });
}

// A toolbar's buttons take no keyboard by themselves.
QAction* PaneToolbar::addItem(const QString& title, const QString& symbol) {
  QAction* item = addAction(icons::symbol(symbol), title);
  widgetForAction(item)->setFocusPolicy(Qt::TabFocus);
  return item;
}

}  // namespace vantory
