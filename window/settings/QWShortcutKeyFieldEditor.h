// Captures the keys while a shortcut's cell is edited.
#pragma once

#include <QLineEdit>
#include <functional>

#include "settings/ui/ShortcutViews.h"

namespace vantory {

// Posts "QWShortcutKeyChanged" for the first key that can be one. Escape and Tab alone leave it.
class QWShortcutKeyFieldEditor : public QLineEdit, public ShortcutFieldEditor {
 public:
  explicit QWShortcutKeyFieldEditor(QWidget* parent);

  std::function<void()> onLeave;

  void empty() override { clear(); }

 protected:
  bool event(QEvent* event) override;

 private:
  void keyDown(const QKeyEvent& event);
};

}  // namespace vantory
