// Global shortcuts for the program's commands: what the table shows, and how the shared list is changed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "services/messages/NotificationCenter.h"
#include "settings/ShortcutList.h"
#include "settings/ui/ShortcutViews.h"

namespace vantory {

// The program does not catch the keys. It writes them into the shared list and has another program, the shortcut key
// manager, read that. Main thread.
class QWShortcutKeyTableDelegate {
 public:
  static QWShortcutKeyTableDelegate& sharedController();

  // Told as "QWShortcutKeyChanged" (with "keycode", "shift", "ctrl", "opt", "cmd") and "QWShortcutKeyCleared" when a
  // person gives the selected row a key, or takes it away. Not owned; null when the table goes.
  void setTable(ShortcutTable* table);

  // Reads the commands and their shortcuts anew, and looks whether the manager is there.
  void populateKeyData();

  void keyChanged(const UserInfo& info);
  void keyCleared();
  // Takes the selected row's key away.
  void clearShortcutKey();

  struct KeyboardShortcut {
    std::optional<std::string> id = {};  // of the command
    std::optional<PropertyListArray> params = {};
    std::uint32_t keycode = 0;
    bool shift = false;
    bool cmd = false;
    bool opt = false;
    bool ctrl = false;
  };
  // Replaces the command's shortcut and has the manager read the list. Fails when the list could not be written.
  Status setKeyboardShortcutWithID(const KeyboardShortcut& shortcut);

  // "Ctrl+Shift+Alt+Cmd+F", or less of it; none for a code that no key has.
  static std::optional<std::string> nameForKeyCode(std::uint32_t keycode, std::uint16_t modifiers);
  // What stands on the key, whatever the modifiers.
  static std::optional<std::string> stringForKeyCode(std::uint32_t keycode, std::uint16_t withModifierFlags);

  std::size_t numberOfRows() const { return rows_.size(); }
  // Of the columns "description" and "shortcutkey"; empty for others, and where there is no shortcut.
  std::string objectValueForTableColumn(const std::string& column, std::size_t row) const;
  // The capturing editor, emptied, for the table; null for anything else.
  ShortcutFieldEditor* windowWillReturnFieldEditor(const ShortcutTable* toObject);

 private:
  struct Row {
    std::string id;
    std::string description;
    std::string keyname = {};  // empty without a shortcut
  };

  static std::vector<Row> commandTable();
  void showShortcuts();
  Row* selectedRow();
  void handOver() const;

  ShortcutList list_;
  std::vector<Row> rows_;
  ShortcutTable* table_ = nullptr;
  NotificationCenter::Observation changed_;
  NotificationCenter::Observation cleared_;
};

}  // namespace vantory
