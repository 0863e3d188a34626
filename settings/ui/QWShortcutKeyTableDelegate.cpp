// Joins the table of commands with the shared list.
#include "settings/ui/QWShortcutKeyTableDelegate.h"

#include <chrono>

#include "base/Paths.h"
#include "base/PropertyListBytes.h"
#include "platform/FileSystem.h"
#include "platform/Messaging.h"
#include "platform/SystemInfo.h"
#include "platform/SystemLog.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"
#include "services/messages/QWAlert.h"
#include "services/threads/BackgroundThreads.h"
#include "services/tools/QWTask.h"

namespace vantory {

namespace {

constexpr std::chrono::seconds kManagersTime{10};

Platform& platform() {
  return Runtime::current().platform();
}

// None when it is not installed.
std::optional<std::string> managerPath() {
  const auto support = QWLocalPaths::appSupportDirectory(false);
  if (!support) return std::nullopt;
  const std::string path = paths::join(*support, "Quarrywell/Shared Resources/QWShortcutKeyManager");
  if (!QWFileManager::fileExistsAtPath(path)) return std::nullopt;
  return path;
}

std::string textIn(const PropertyListDictionary& values, std::string_view key) {
  const PropertyList* value = values.find(key);
  return value ? textOf(*value).value_or("") : "";
}

// A key that no keyboard has is shown as "Unknown".
std::string nameOf(const ShortcutList::Entry& entry) {
  const auto name =
      entry.keycode ? QWShortcutKeyTableDelegate::nameForKeyCode(*entry.keycode, entry.modifiers) : std::nullopt;
  return name.value_or("Unknown");
}

std::uint32_t keycodeIn(const UserInfo& info) {
  const PropertyList* value = info.find("keycode");
  const auto* number = value ? std::get_if<std::int64_t>(&value->content()) : nullptr;
  return number ? static_cast<std::uint32_t>(*number) : 0;
}

bool isSet(const UserInfo& info, std::string_view flag) {
  const PropertyList* value = info.find(flag);
  return value && value->asBoolean() && *value->asBoolean();
}

void tellNotSaved(const Error& cause) {
  QWAlert::alertSheetWithMessageText(
      "The shortcut could not be saved.",
      "Please check your permissions for the Preferences folder and the free space on your disk.\n\n" + cause.text,
      AlertParent::SettingsWindow);
}

}  // namespace

QWShortcutKeyTableDelegate& QWShortcutKeyTableDelegate::sharedController() {
  return Runtime::current().shared<QWShortcutKeyTableDelegate>();
}

void QWShortcutKeyTableDelegate::setTable(ShortcutTable* table) {
  table_ = table;
  changed_.reset();
  cleared_.reset();
  if (!table) return;
  NotificationCenter& center = NotificationCenter::shared();
  changed_ = center.observe("QWShortcutKeyChanged", [this](const UserInfo& info) { keyChanged(info); });
  cleared_ = center.observe("QWShortcutKeyCleared", [this] { keyCleared(); });
}

// --- The table -------------------------------------------------------------------------------------------------------

// From the file that comes with the program; none where that is missing or damaged.
std::vector<QWShortcutKeyTableDelegate::Row> QWShortcutKeyTableDelegate::commandTable() {
  std::vector<Row> rows;
  const auto bytes = platform().files.read(platform().system.resourcePath("QWKeys.plist"));
  const auto content = bytes ? parsePropertyList(*bytes) : std::nullopt;
  const PropertyListDictionary* table = content ? content->asDictionary() : nullptr;
  const PropertyList* commands = table ? table->find("QWKeys") : nullptr;
  if (!commands || !commands->asArray()) return rows;
  for (const PropertyList& command : *commands->asArray())
    if (const PropertyListDictionary* values = command.asDictionary(); values && !textIn(*values, "id").empty())
      rows.push_back({textIn(*values, "id"), textIn(*values, "description")});
  return rows;
}

void QWShortcutKeyTableDelegate::populateKeyData() {
  if (table_) table_->setManagerMissing(!managerPath());
  rows_ = commandTable();
  showShortcuts();
}

// Of two entries for one command the later counts.
void QWShortcutKeyTableDelegate::showShortcuts() {
  for (Row& row : rows_) row.keyname.clear();
  for (const ShortcutList::Entry& entry : list_.ownEntries())
    for (Row& row : rows_)
      if (row.id == entry.commandID) row.keyname = nameOf(entry);
  if (table_) table_->reloadData();
}

std::string QWShortcutKeyTableDelegate::objectValueForTableColumn(const std::string& column, std::size_t row) const {
  if (row >= rows_.size()) return "";
  if (column == "description") return rows_[row].description;
  return column == "shortcutkey" ? rows_[row].keyname : "";
}

// Emptied, because one editor serves all rows.
ShortcutFieldEditor* QWShortcutKeyTableDelegate::windowWillReturnFieldEditor(const ShortcutTable* toObject) {
  if (!table_ || toObject != table_) return nullptr;
  table_->fieldEditor().empty();
  return &table_->fieldEditor();
}

QWShortcutKeyTableDelegate::Row* QWShortcutKeyTableDelegate::selectedRow() {
  const int row = table_ ? table_->selectedRow() : -1;
  return row >= 0 && static_cast<std::size_t>(row) < rows_.size() ? &rows_[static_cast<std::size_t>(row)] : nullptr;
}

// --- Changes ---------------------------------------------------------------------------------------------------------

// The keys show at once, and afterwards what has been stored.
void QWShortcutKeyTableDelegate::keyChanged(const UserInfo& info) {
  Row* row = selectedRow();
  if (!row || info.empty()) return;
  const ShortcutKey key{keycodeIn(info), isSet(info, "shift"), isSet(info, "ctrl"), isSet(info, "opt"),
                        isSet(info, "cmd")};
  row->keyname = nameForKeyCode(key.keycode, key.modifiers()).value_or("Unknown");
  const Status saved = setKeyboardShortcutWithID(
      {.id = row->id, .keycode = key.keycode, .shift = key.shift, .cmd = key.cmd, .opt = key.opt, .ctrl = key.ctrl});
  table_->endEditing();
  showShortcuts();
  if (!saved) tellNotSaved(saved.error());
}

void QWShortcutKeyTableDelegate::clearShortcutKey() {
  NotificationCenter::shared().post("QWShortcutKeyCleared");
}

void QWShortcutKeyTableDelegate::keyCleared() {
  const Row* row = selectedRow();
  if (!row) return;
  const Status saved = list_.remove({.commandID = row->id});
  if (saved) handOver();
  showShortcuts();
  if (!saved) tellNotSaved(saved.error());
}

Status QWShortcutKeyTableDelegate::setKeyboardShortcutWithID(const KeyboardShortcut& shortcut) {
  const ShortcutKey key{shortcut.keycode, shortcut.shift, shortcut.ctrl, shortcut.opt, shortcut.cmd};
  Status stored = list_.set({.commandID = shortcut.id, .params = shortcut.params}, key);
  if (stored) handOver();
  return stored;
}

// Another program may take its time, which the window must not.
void QWShortcutKeyTableDelegate::handOver() const {
  const auto manager = managerPath();
  if (!manager)
    platform().systemLog.write(
        "Unable to setup shortcut keys - shortcut key manager doesn't exist. Please reinstall this software.");
  BackgroundThreads::shared().start([manager] {
    const Status announced = platform().announcements.announce("QWShortcutKeysReload");
    if (!announced) QWLog::appendLog("The change of shortcuts could not be announced: %@", announced.error().text);
    if (manager) QWTask::runTask(*manager, {"-setup"}, kManagersTime);
  });
}

// --- Names of keys ---------------------------------------------------------------------------------------------------

std::optional<std::string> QWShortcutKeyTableDelegate::nameForKeyCode(std::uint32_t keycode, std::uint16_t modifiers) {
  const auto key = stringForKeyCode(keycode, 0);
  if (!key) return std::nullopt;
  std::string name;
  if (modifiers & kControlModifier) name += "Ctrl+";
  if (modifiers & kShiftModifier) name += "Shift+";
  if (modifiers & kOptionModifier) name += "Alt+";
  if (modifiers & kCommandModifier) name += "Cmd+";
  return name += *key;
}

std::optional<std::string> QWShortcutKeyTableDelegate::stringForKeyCode(std::uint32_t keycode, std::uint16_t) {
  return keyCodeName(keycode);
}

}  // namespace vantory
