// Turns keys and clicks into calls of the delegate.
#include "window/outline/OutlineTree.h"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMenu>

namespace vantory {

namespace {

// Backspace too, which is where a Mac's keyboard has its delete key.
OutlineKey outlineKey(int key) {
  return key == Qt::Key_Delete || key == Qt::Key_Backspace ? OutlineKey::Delete : OutlineKey::Other;
}

}  // namespace

OutlineTree::OutlineTree(QWidget* parent) : QTreeView(parent) {
  setUniformRowHeights(true);
  setAllColumnsShowFocus(true);
  setSelectionMode(SingleSelection);
  setSelectionBehavior(SelectRows);
  setEditTriggers(EditKeyPressed | SelectedClicked);
  // What a double click does is the delegate's choice.
  setExpandsOnDoubleClick(false);
  setTabKeyNavigation(false);
  setFrameShape(QFrame::NoFrame);
}

namespace {

// With Ctrl a letter's text is a control character: Ctrl+M is no Return.
QString textOf(const QKeyEvent& event) {
  const bool isLetter = event.key() >= Qt::Key_Space && event.key() <= Qt::Key_ydiaeresis;
  return event.modifiers() & Qt::ControlModifier && isLetter ? QString(QChar(event.key())) : event.text();
}

}  // namespace

// Keys bound to a command go first, then the space bar, then what a tree does with keys.
void OutlineTree::keyPressEvent(QKeyEvent* event) {
  if (state() == EditingState) return QTreeView::keyPressEvent(event);
  if (!event->isAutoRepeat()) pressedKey_ = event->key();
  const QString text = textOf(*event);
  if (!text.isEmpty() && onKeyDown && onKeyDown(text.front())) return;
  if (event->key() == Qt::Key_Space && toggleCheckBox()) return;
  QTreeView::keyPressEvent(event);
}

// A key that was pressed in a dialog may be let go here, and is not meant for the row.
void OutlineTree::keyReleaseEvent(QKeyEvent* event) {
  const bool pressedHere = !event->isAutoRepeat() && pressedKey_ == event->key();
  if (!event->isAutoRepeat()) pressedKey_ = 0;
  if (pressedHere && state() != EditingState && onKeyUp && onKeyUp(outlineKey(event->key()))) return;
  QTreeView::keyReleaseEvent(event);
}

// The space bar works on the row's check box, whichever of its cells is the current one.
bool OutlineTree::toggleCheckBox() {
  if (!currentIndex().isValid()) return false;
  for (int column = 0; column < model()->columnCount(); ++column) {
    const QModelIndex cell = currentIndex().siblingAtColumn(column);
    if (!(cell.flags() & Qt::ItemIsUserCheckable)) continue;
    const bool on = cell.data(Qt::CheckStateRole).toInt() == Qt::Checked;
    return model()->setData(cell, on ? Qt::Unchecked : Qt::Checked, Qt::CheckStateRole);
  }
  return false;
}

// Only on a row, and not while its name is edited.
void OutlineTree::mouseDoubleClickEvent(QMouseEvent* event) {
  QTreeView::mouseDoubleClickEvent(event);
  const QModelIndex index = indexAt(event->position().toPoint());
  if (event->button() == Qt::LeftButton && index.isValid() && state() != EditingState && onDoubleClick) onDoubleClick();
}

QModelIndex OutlineTree::indexForMenu(const QContextMenuEvent& event) const {
  return event.reason() == QContextMenuEvent::Keyboard ? currentIndex() : indexAt(event.pos());
}

// The menu is about the row under it, so that row is selected first.
void OutlineTree::contextMenuEvent(QContextMenuEvent* event) {
  const QModelIndex index = indexForMenu(*event);
  if (!menu || !index.isValid() || !(index.flags() & Qt::ItemIsSelectable)) return;
  setCurrentIndex(index);
  const bool keyboard = event->reason() == QContextMenuEvent::Keyboard;
  menu->popup(keyboard ? viewport()->mapToGlobal(visualRect(index).bottomLeft()) : event->globalPos());
}

}  // namespace vantory
