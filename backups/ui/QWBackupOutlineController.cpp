// Ticks, and the writing of what is ticked.
#include "backups/ui/QWBackupOutlineController.h"

#include <algorithm>

#include "backups/QWBackup.h"
#include "backups/QWDataController.h"
#include "backups/ui/CatalogRows.h"
#include "backups/ui/Controls.h"
#include "backups/ui/FailureReport.h"
#include "backups/ui/PaneSwitcher.h"
#include "backups/ui/QWRestoreOutlineController.h"
#include "base/Format.h"
#include "services/TaskReport.h"
#include "services/log/QWLog.h"
#include "services/messages/QWAlert.h"
#include "services/receipts/TaskReceipt.h"
#include "services/threads/MainThread.h"

namespace vantory {

namespace {

AppList apps() {
  return QWDataController::sharedController().appArray();
}

}  // namespace

QWBackupOutlineController::QWBackupOutlineController(const Parts& parts)
    : SurveyedRows(parts.outline, &parts.backupButton),
      parts_(parts),
      appRefresh_(NotificationCenter::shared().observe("QWVantoryAppRefresh", [this] { reload(); })),
      tabSwitch_(NotificationCenter::shared().observe("QWVantoryBackupTabSwitch", [this] { reload(); })) {
  updateHeaderCheckCell();
}

void QWBackupOutlineController::reload() {
  parts_.outline.reloadData();
  updateHeaderCheckCell();
}

// With mixed applications only the header is off, and yet a backup can be made.
void QWBackupOutlineController::updateHeaderCheckCell() {
  const AppList all = apps();
  const auto on = std::count_if(all.begin(), all.end(), [](const auto& app) { return app->selected() == On; });
  const bool any = std::any_of(all.begin(), all.end(), [](const auto& app) { return app->selected() != Off; });
  if (on == 0)
    headerState_ = Off;
  else
    headerState_ = static_cast<std::size_t>(on) == all.size() ? On : Mixed;
  parts_.outline.setHeaderState(headerState_);
  parts_.backupButton.setEnabled(any);
  showWhetherThere();
}

void QWBackupOutlineController::writeBackupOnThread(const std::shared_ptr<QWBackup>& backup) {
  MainThread& mainThread = MainThread::shared();
  mainThread.runAndWait([this] { parts_.spinner.startAnimation(); });
  bool again = true;
  while (again) again = writeOnce(backup);
  mainThread.runAndWait([this] { parts_.spinner.stopAnimation(); });
}

bool QWBackupOutlineController::writeOnce(const std::shared_ptr<QWBackup>& backup) {
  QWLog::appendLog("Writing backup...");
  TaskReport report;
  const TaskReceipt receipt(report, {.name = "backup", .operands = {backup->name()}});
  bool again = false;
  switch (backup->writeData(report)) {
    case WriteResult::NoFiles:
      QWLog::appendLog("Backup failed - no files to copy");
      again = reportResult("No files to copy",
                           "The backup was not created because none of the selected preference files exist on disk. To "
                           "recreate them, launch the selected applications or restore an existing backup.",
                           report, report.hasFailures() ? Retry::Offered : Retry::None);
      backup->dropUnwritten(report);
      break;
    case WriteResult::SettingsNotWritten:
      QWLog::appendLog("Backup failed - error creating file");
      again = reportResult("Error creating file",
                           formatted("Please make sure you have write permissions for the folder %@.",
                                     QWDataController::vantoryBackupLocation()),
                           report);
      backup->dropUnwritten(report);
      break;
    case WriteResult::Success:
      QWLog::appendLog("Backup successful");
      QWDataController::sharedController().populateBackups();
      parts_.restoreController.reload();
      MainThread::shared().runAndWait([&] { selectBackupInRestoreTab(backup); });
      tellNotices(report);
      if (!report.isWhole()) again = reportWriting("Not everything could be backed up", "", report);
      break;
  }
  return again;
}

void QWBackupOutlineController::selectBackupInRestoreTab(const std::shared_ptr<QWBackup>& backup) {
  parts_.restoreController.reload();
  parts_.panes.toolbarRestore();
  parts_.restoreController.selectBackupWithPath(backup->path());
}

Rows QWBackupOutlineController::rowsUnder(const OutlineItemPointer& item) const {
  return item ? rowsBelow(item) : rowsFor(apps());
}

ObjectValue QWBackupOutlineController::objectValueForTableColumn(const std::string& column,
                                                                 const OutlineItemPointer& byItem) {
  if (const auto value = surveyedValue(column, byItem)) return *value;
  return selectionOfRow(byItem);
}

void QWBackupOutlineController::setObjectValue(const ObjectValue& value, const std::string&,
                                               const OutlineItemPointer& byItem) {
  selectRow(byItem, clickedState(value));
  parts_.outline.reloadItem(rowAround<QWApp>(byItem), true);
  updateHeaderCheckCell();
}

void QWBackupOutlineController::willDisplayCell(OutlineCell& cell, const std::string& column,
                                                const OutlineItemPointer& item) {
  cell.dimmed = hasNothing(item);
  if (column != "selected") return;
  cell.title = nameOfRow(item);
  if (const auto app = rowAs<QWApp>(item)) cell.icon = app->icon();
}

// A mixed header becomes on.
void QWBackupOutlineController::mouseDownInHeaderOfTableColumn(const std::string&) {
  const State state = headerState_ == On ? Off : On;
  for (const auto& row : rowsUnder(nullptr)) selectRow(row, state);
  reload();
}

}  // namespace vantory
