// What the Restore pane shows, and in which order.
#include "backups/ui/QWRestoreOutlineController.h"

#include "backups/BackupAge.h"
#include "backups/DefaultBackup.h"
#include "backups/LibraryFolder.h"
#include "backups/ui/CatalogRows.h"
#include "backups/ui/Controls.h"
#include "backups/ui/FailureReport.h"
#include "backups/ui/LibrarySorting.h"
#include "base/Format.h"
#include "base/Paths.h"
#include "services/TaskReport.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"
#include "services/messages/QWAlert.h"
#include "services/receipts/TaskReceipt.h"
#include "services/threads/MainThread.h"

namespace vantory {

namespace {

QWDataController& library() {
  return QWDataController::sharedController();
}

// Among the automatic ones too; null when the library lists none of that path.
std::shared_ptr<QWBackup> backupWithPath(const std::string& path) {
  for (const auto& backup : library().allBackups())
    if (backup->path() == path) return backup;
  return nullptr;
}

const char* titleOfDefaultCommand(bool isDefault) {
  return isDefault ? "Unset Default Backup" : "Set as Default Backup";
}

}  // namespace

QWRestoreOutlineController::QWRestoreOutlineController(const Parts& parts)
    : parts_(parts),
      backupsRefresh_(NotificationCenter::shared().observe("QWVantoryBackupsRefresh", [this] { reload(); })),
      tabSwitch_(NotificationCenter::shared().observe("QWVantoryRestoreTabSwitch", [this] { reload(); })) {}

// Sorting asks for all sizes, so they are measured first, never on the main thread.
void QWRestoreOutlineController::reload() {
  if (!MainThread::shared().isCurrent()) {
    library().measureBackups();
    MainThread::shared().runAndWait([this] { reload(); });
  } else if (library().areBackupsMeasured()) {
    applySortingForOutlineView();
    selectionDidChange();
  } else {
    measuring_.add([this] { reload(); });
  }
}

std::shared_ptr<QWBackup> QWRestoreOutlineController::selectedBackup() const {
  return rowAs<QWBackup>(rowAround<QWBackup>(parts_.outline.selectedItem()));
}

void QWRestoreOutlineController::selectBackupWithPath(const std::string& path) {
  if (const auto backup = backupWithPath(path)) parts_.outline.selectItem(std::make_shared<RecordRow>(backup));
}

std::shared_ptr<QWBackup> QWRestoreOutlineController::recordInLibrary(const std::shared_ptr<QWBackup>& backup) const {
  std::shared_ptr<QWBackup> record;
  MainThread::shared().runAndWait([&] { record = backupWithPath(backup->path()); });
  return record ? record : backup;
}

void QWRestoreOutlineController::applySortingForOutlineView() {
  const SortOrder order = storedSortOrder();
  sortColumnWithIdentifier(order.column, order.descending);
}

void QWRestoreOutlineController::sortColumnWithIdentifier(const std::string& column, bool descending) {
  library().setBackupArray(sortedLibrary(library().backupArray(), {column, descending}));
  setSortIndicatorsForColumn(column, descending);
  parts_.outline.reloadData();
  showAge();
}

void QWRestoreOutlineController::showAge() {
  parts_.outline.setRemark(ageOf(library().allBackups()).text);
}

void QWRestoreOutlineController::setSortIndicatorsForColumn(const std::string& column, bool descending) {
  parts_.outline.setSortIndicator(column, descending ? SortIndicator::Descending : SortIndicator::Ascending);
}

// The same column once more turns the order round.
void QWRestoreOutlineController::didClickTableColumn(const std::string& column) {
  SortOrder order = storedSortOrder();
  if (order.column == column) {
    order.descending = !order.descending;
  } else {
    parts_.outline.setSortIndicator(order.column, SortIndicator::None);
    order = {column, false};
  }
  storeSortOrder(order);
  reload();
}

// Library, then backups, then what they hold.
Rows QWRestoreOutlineController::rowsUnder(const OutlineItemPointer& item) const {
  if (!item) return rowsFor(library().backupArray());
  if (const auto header = rowAs<QWAutosaveHeader>(item)) return rowsFor(header->children(), item);
  if (const auto backup = rowAs<QWBackup>(item)) return rowsFor(backup->children(), item);
  return rowsBelow(item);
}

std::optional<std::uint64_t> QWRestoreOutlineController::sizeOfRow(const OutlineItemPointer& item) {
  if (const auto node = rowAs<BackupNode>(item)) return node->isMeasured() ? std::optional(node->size()) : std::nullopt;
  const auto app = applicationOfRow(item);
  if (!app) return std::nullopt;
  if (!app->isMeasured()) {
    measure(rowAround<QWApp>(item));
    return std::nullopt;
  }
  const auto prefItem = rowAs<QWPrefItem>(item);
  return prefItem ? prefItem->size() : app->size();
}

// An application that is being measured already is not measured once more.
void QWRestoreOutlineController::measure(const OutlineItemPointer& row) {
  const auto app = rowAs<QWApp>(row);
  if (!beingMeasured_.insert(app).second) return;
  measuring_.add([this, app, row] {
    (void)app->size();
    MainThread::shared().runAndWait([&] {
      beingMeasured_.erase(app);
      parts_.outline.reloadItem(row, true);
    });
  });
}

// Backups have a name, a size and a date; what lies in them has a check box and a size.
ObjectValue QWRestoreOutlineController::objectValueForTableColumn(const std::string& column,
                                                                  const OutlineItemPointer& byItem) {
  const auto node = rowAs<BackupNode>(byItem);
  if (column == "name") return node ? ObjectValue(node->name()) : ObjectValue(selectionOfRow(byItem));
  if (column == "size") {
    const auto size = sizeOfRow(byItem);
    return size ? ObjectValue(QWFileManager::formatFileSize(static_cast<double>(*size))) : ObjectValue();
  }
  const auto date = node ? node->date() : std::nullopt;
  return date ? ObjectValue(*date) : ObjectValue();
}

// A backup's name was typed, or a check box clicked. The other columns cannot be changed.
void QWRestoreOutlineController::setObjectValue(const ObjectValue& value, const std::string& forTableColumn,
                                                const OutlineItemPointer& byItem) {
  if (forTableColumn != "name") return;
  if (const auto backup = rowAs<QWBackup>(byItem)) {
    if (const auto* name = std::get_if<std::string>(&value)) rename(backup, *name);
    return;
  }
  const OutlineItemPointer app = rowAround<QWApp>(byItem);
  if (!app) return;
  selectRow(byItem, clickedState(value));
  parts_.outline.reloadItem(app, true);
}

// Only names have icons, may be edited, and stand out.
void QWRestoreOutlineController::willDisplayCell(OutlineCell& cell, const std::string& forTableColumn,
                                                 const OutlineItemPointer& item) {
  if (forTableColumn != "name") return;
  if (const auto backup = rowAs<QWBackup>(item)) {
    cell.icon = "VNT-icon";
    cell.editable = true;
    cell.emphasized = backup->isDefault();
    cell.remark = backup->flaw();
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

// The command's title follows: it says what it would do next.
void QWRestoreOutlineController::toggleDefault() {
  const auto backup = selectedBackup();
  if (!backup) return;
  const bool wasDefault = backup->isDefault();
  if (!wasDefault && !backup->isComplete())
    return backup->readError()
               ? reportFailure("A backup that cannot be read cannot be the default", backup->readError()->text)
               : reportFailure(
                     "An incomplete backup cannot be the default",
                     formatted("\"%@\" was not written to its end, or its settings are damaged.", backup->name()));
  TaskReport report;
  const TaskReceipt receipt(report, {.name = "default", .operands = {wasDefault ? "none" : backup->name()}});
  const Status stored = setPlaceOfDefault(wasDefault ? libraryFolder().value_or("") : backup->path(), report);
  if (!stored) return reportFailure("The default backup could not be changed", stored.error().text);
  QWLog::appendLog(wasDefault ? "%@ was removed as the default backup" : "%@ was set as the default backup",
                   backup->name());
  for (const auto& node : library().backupArray()) node->updateDefault();
  // An automatic backup is no entry of its own there.
  for (const auto& each : library().allBackups()) each->updateDefault();
  parts_.outline.reloadData();
  selectionDidChange();
}

}  // namespace vantory
