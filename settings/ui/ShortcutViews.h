// The table of commands and shortcuts, as its delegate sees it.
#pragma once

namespace vantory {

// Captures the keys while a shortcut's cell is edited.
class ShortcutFieldEditor {
 public:
  virtual ~ShortcutFieldEditor() = default;
  virtual void empty() = 0;
};

// Main thread.
class ShortcutTable {
 public:
  virtual ~ShortcutTable() = default;

  // The rows have changed. What is selected stays so.
  virtual void reloadData() = 0;
  // None is -1.
  virtual int selectedRow() const = 0;
  virtual void endEditing() = 0;
  // Without the shortcut key manager a warning is shown and the table is disabled.
  virtual void setManagerMissing(bool missing) = 0;
  virtual ShortcutFieldEditor& fieldEditor() = 0;
};

}  // namespace vantory
