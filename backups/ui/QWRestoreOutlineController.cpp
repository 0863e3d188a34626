#include "backups/ui/QWRestoreOutlineController.h"

#include <algorithm>
#include <chrono>

#include "backups/ui/CatalogRows.h"
#include "backups/ui/LibrarySorting.h"
#include "platform/Controls.h"
#include "services/Format.h"
#include "services/MainThread.h"
#include "services/Paths.h"
#include "services/QWAlert.h"
#include "services/QWFileManager.h"
#include "services/QWLog.h"
#include "services/QWUserDefaults.h"
#include "services/Runtime.h"

namespace vantory {

namespace {

using namespace std::chrono_literals;

QWDataController& library() {
  return QWDataController::sharedController();
}

// All backups of the library, the automatic ones included.
BackupList allBackups() {
  BackupList backups;
  for (const auto& node : library().backupArray()) {
    if (const auto backup = std::dynamic_pointer_cast<QWBackup>(node)) backups.push_back(backup);
    if (const auto header = std::dynamic_pointer_cast<QWAutosaveHeader>(node))
      backups.insert(backups.end(), header->children().begin(), header->children().end());
  }
  return backups;
}

bool holds(const QWBackup& backup, const std::shared_ptr<QWApp>& app) {
  return std::find(backup.children().begin(), backup.children().end(), app) != backup.children().end();
}

// A name for the backup that nothing beside it bears.
std::string freeNameFor(const QWBackup& backup, const std::string& wanted) {
  const std::string folder = paths::parent(backup.path());
  std::string name = QWDataController::uniqueBackupName(wanted);
  for (int number = 2; QWFileManager::itemExistsAtPath(paths::join(folder, name + ".vnt")); ++number)
    name = formatted("%@-%i", wanted, number);
  return name;
}

const char* titleOfDefaultCommand(bool isDefault) {
  return isDefault ? "Unset Default Backup" : "Set as Default Backup";
}

}  // namespace

QWRestoreOutlineController::QWRestoreOutlineController(const Parts& parts)
    : parts_(parts),
      tabSwitch_(NotificationCenter::shared().observe("QWVantoryRestoreTabSwitch", [this] { reload(); })) {
  library().reloadRestorePane = [this] { reload(); };
}

QWRestoreOutlineController::~QWRestoreOutlineController() {
  library().reloadRestorePane = nullptr;
}

void QWRestoreOutlineController::reload() {
  MainThread::shared().runAndWait([this] {
    applySortingForOutlineView();
    selectionDidChange();
  });
}

std::shared_ptr<QWBackup> QWRestoreOutlineController::selectedBackup() const {
  const OutlineItemPointer row = parts_.outline.selectedItem();
  if (auto backup = rowAs<QWBackup>(row)) return backup;
  const auto app = applicationOfRow(row);
  if (!app) return nullptr;
  for (const auto& backup : allBackups())
    if (holds(*backup, app)) return backup;
  return nullptr;
}

void QWRestoreOutlineController::selectBackupWithPath(const std::string& path) {
  for (const auto& backup : allBackups())
    if (backup->path() == path) {
      parts_.outline.selectItem(backup);
      return;
    }
}

void QWRestoreOutlineController::resetSelection() {
  parts_.outline.selectItem(nullptr);
}

void QWRestoreOutlineController::collapseAll() {
  parts_.outline.collapseAll();
}

void QWRestoreOutlineController::applySortingForOutlineView() {
  const SortOrder order = storedSortOrder();
  sortColumnWithIdentifier(order.column, order.descending);
}

void QWRestoreOutlineController::sortColumnWithIdentifier(const std::string& column, bool descending) {
  library().setBackupArray(sortedLibrary(library().backupArray(), {column, descending}));
  parts_.outline.setSortIndicator(column, descending ? SortIndicator::Descending : SortIndicator::Ascending);
  parts_.outline.reloadData();
}

void QWRestoreOutlineController::didClickTableColumn(const std::string& column) {
  SortOrder order = storedSortOrder();
  if (order.column == column) {
    order.descending = !order.descending;
  } else {
    parts_.outline.setSortIndicator(order.column, SortIndicator::None);
    order = {column, false};
  }
  sortColumnWithIdentifier(order.column, order.descending);
  storeSortOrder(order);
}

Rows QWRestoreOutlineController::rowsUnder(const OutlineItemPointer& item) const {
  if (!item) {
    const auto backups = library().backupArray();
    return {backups.begin(), backups.end()};
  }
  if (const auto header = rowAs<QWAutosaveHeader>(item)) return {header->children().begin(), header->children().end()};
  if (const auto backup = rowAs<QWBackup>(item)) return rowsOf(backup->children());
  return rowsBelow(item);
}

ObjectValue QWRestoreOutlineController::objectValueForTableColumn(const std::string& column,
                                                                  const OutlineItemPointer& byItem) {
  const auto node = rowAs<BackupNode>(byItem);
  if (column == "name") return node ? ObjectValue(node->name()) : ObjectValue(selectionOfRow(byItem));
  if (!node) return {};
  if (column == "size") return QWFileManager::formatFileSize(static_cast<double>(node->size()));
  const auto date = node->date();
  return date ? ObjectValue(*date) : ObjectValue();
}

void QWRestoreOutlineController::setObjectValue(const ObjectValue& value, const std::string& forTableColumn,
                                                const OutlineItemPointer& byItem) {
  if (forTableColumn != "name") return;
  if (const auto backup = rowAs<QWBackup>(byItem)) {
    if (const auto* name = std::get_if<std::string>(&value)) rename(backup, *name);
    return;
  }
  const auto app = applicationOfRow(byItem);
  if (!app) return;
  selectRow(byItem, clickedState(value));
  parts_.outline.reloadItem(app, true);
}

void QWRestoreOutlineController::rename(const std::shared_ptr<QWBackup>& backup, const std::string& name) {
  const std::string cleaned = QWFileManager::validateFilename(name);
  if (cleaned.empty() || cleaned == backup->name()) return;
  const std::string free = freeNameFor(*backup, cleaned);
  const std::string path = paths::join(paths::parent(backup->path()), free + ".vnt");
  if (!QWFileManager::moveFile(backup->path(), path, 20s)) return;
  backup->setName(free);
  backup->setPath(path);
  parts_.outline.reloadItem(backup, false);
}

void QWRestoreOutlineController::willDisplayCell(OutlineCell& cell, const std::string& forTableColumn,
                                                 const OutlineItemPointer& item) {
  if (forTableColumn != "name") return;
  if (const auto backup = rowAs<QWBackup>(item)) {
    cell.icon = "VNT-icon";
    cell.editable = true;
    cell.emphasized = backup->isDefault();
    return;
  }
  if (rowAs<QWAutosaveHeader>(item)) {
    cell.icon = "Autosaves";
    return;
  }
  cell.title = nameOfRow(item);
  if (const auto app = rowAs<QWApp>(item)) cell.icon = app->icon();
}

void QWRestoreOutlineController::selectionDidChange() {
  const auto backup = selectedBackup();
  parts_.defaultCommand.setTitle(titleOfDefaultCommand(backup && backup->isDefault()));
}

bool QWRestoreOutlineController::keyUp(OutlineKey key) {
  const auto backup = rowAs<QWBackup>(parts_.outline.selectedItem());
  if (key != OutlineKey::Delete || !backup) return false;
  QWLog::appendLog("User tried to delete backup %@. Asking for confirmation.", backup->name());
  if (QWAlert::alertSheetWithMessageText({.messageText = "Are you sure you wish to remove this backup?",
                                          .defaultButton = "Remove",
                                          .alternateButton = "Cancel",
                                          .informativeText = "The backup will be placed in the Trash."}) !=
      QWAlert::Default)
    return true;
  QWLog::appendLog("User chose to remove backup");
  library().removeBackup(backup);
  reload();
  return true;
}

void QWRestoreOutlineController::toggleDefault() {
  const auto backup = selectedBackup();
  if (!backup) return;
  if (backup->isDefault()) {
    QWLog::appendLog("%@ was removed as the default backup", backup->name());
    QWUserDefaults::standardUserDefaults().removeObjectForKey("defaultBackup");
  } else {
    QWLog::appendLog("%@ was set as the default backup", backup->name());
    backup->setDefault();
  }
  for (const auto& node : library().backupArray()) node->updateDefault();
  // An automatic backup is no entry of its own there.
  for (const auto& each : allBackups()) each->updateDefault();
  parts_.outline.reloadData();
  selectionDidChange();
}

}  // namespace vantory
