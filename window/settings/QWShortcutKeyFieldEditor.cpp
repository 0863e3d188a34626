// Turns key presses into a shortcut.
#include "window/settings/QWShortcutKeyFieldEditor.h"

#include <QKeyEvent>

#include "services/messages/NotificationCenter.h"
#include "settings/ShortcutKey.h"
#include "window/settings/MacKeyCodes.h"

namespace vantory {

namespace {

// Escape and Tab must let the keyboard out, unless a modifier makes shortcuts of them.
bool leaves(const QKeyEvent& event) {
  const bool isLeaving = event.key() == Qt::Key_Escape || event.key() == Qt::Key_Tab || event.key() == Qt::Key_Backtab;
  return isLeaving && !(event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));
}

// As the table's delegate reads it.
UserInfo infoOf(const ShortcutKey& key) {
  UserInfo info;
  info.set("keycode", std::int64_t{key.keycode});
  info.set("shift", key.shift);
  info.set("ctrl", key.ctrl);
  info.set("opt", key.opt);
  info.set("cmd", key.cmd);
  return info;
}

}  // namespace

QWShortcutKeyFieldEditor::QWShortcutKeyFieldEditor(QWidget* parent) : QLineEdit(parent) {
  // Keys are captured here, not typed.
  setReadOnly(true);
  setFrame(false);
  setAutoFillBackground(true);
  setContextMenuPolicy(Qt::NoContextMenu);
  setPlaceholderText(QStringLiteral("Press the keys"));
  setAccessibleName(QStringLiteral("Press the keys of the shortcut"));
}

// Before the keys can mean anything to the window.
bool QWShortcutKeyFieldEditor::event(QEvent* event) {
  if (event->type() == QEvent::ShortcutOverride) {
    event->accept();
    return true;
  }
  if (event->type() != QEvent::KeyPress) return QLineEdit::event(event);
  keyDown(static_cast<const QKeyEvent&>(*event));
  event->accept();
  return true;
}

void QWShortcutKeyFieldEditor::keyDown(const QKeyEvent& event) {
  if (event.isAutoRepeat()) return;
  if (leaves(event)) {
    if (onLeave) onLeave();
    return;
  }
  // None for a modifier alone: the key that goes with it is still to come.
  const auto keycode = macKeyCode(event);
  if (!keycode) return;
  const Qt::KeyboardModifiers held = event.modifiers();
  const ShortcutKey key = captured({.keycode = *keycode,
                                    .shift = held.testFlag(Qt::ShiftModifier),
                                    .ctrl = held.testFlag(Qt::ControlModifier),
                                    .opt = held.testFlag(Qt::AltModifier),
                                    .cmd = held.testFlag(Qt::MetaModifier)});
  // The table's delegate stores the shortcut and ends the editing.
  NotificationCenter::shared().post("QWShortcutKeyChanged", infoOf(key));
}

}  // namespace vantory
