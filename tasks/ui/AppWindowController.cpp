// Loads catalog and library, switches panes, makes automatic backups.
#include "tasks/ui/AppWindowController.h"

#include "backups/BackupAge.h"
#include "backups/QWDataController.h"
#include "backups/ui/FailureReport.h"
#include "base/Format.h"
#include "platform/Workspace.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"
#include "services/TaskReport.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"
#include "services/messages/NotificationCenter.h"
#include "services/messages/QWGrowl.h"
#include "services/receipts/TaskReceipt.h"
#include "services/threads/BackgroundThreads.h"
#include "services/threads/MainThread.h"
#include "settings/QWBugReporter.h"
#include "tasks/ui/MainWindowView.h"

namespace vantory {

namespace {

constexpr const char* kCrashAnalysis = "com.quarrywell.Faultlens";

}  // namespace

AppWindowController::AppWindowController(const Parts& parts)
    : parts_(parts),
      progressController_(parts.progressSheet),
      backupsRefresh_(
          NotificationCenter::shared().observe("QWVantoryBackupsRefresh", [this] { warnOfOverdueBackups(); })) {}

void AppWindowController::warnOfOverdueBackups() {
  parts_.window.showWarning(ageOf(QWDataController::sharedController().allBackups()).overdue.value_or(""));
}

void AppWindowController::startLog(BugReporterDelegate* delegate) {
  QWBugReporter::startBugReporterWithDelegate(delegate);
  QWLog::createNewLog(std::nullopt);
}

// In one turn of the tasks: the first backup needs to know the catalog, and that the library is empty.
void AppWindowController::load() {
  SerialWork::tasks().add([this] {
    QWDataController& data = QWDataController::sharedController();
    data.populateApps();
    data.populateBackups();
    const bool hasCrashAnalysis = Runtime::current().platform().workspace.applicationPath(kCrashAnalysis).has_value();
    MainThread::shared().runAndWait([&] {
      if (hasCrashAnalysis) parts_.window.removeLinkItem();
      toolbarTrash();
    });
    // A library that cannot be read looks like one without backups.
    if (const auto error = data.libraryError())
      vantory::reportFailure("Your backups cannot be read", error->text);
    else if (data.backupArray().size() <= 1)
      makeFirstBackup();
    if (const auto overdue = ageOf(data.allBackups()).overdue) {
      QWLog::appendLog("%@", *overdue);
      QWGrowl::postGrowlNotification("Scheduled backups do not happen", *overdue);
    }
  });
}

// Of copies, so that no tick changes.
void AppWindowController::makeFirstBackup() {
  const auto name = QWLocalPaths::username();
  if (!name) return;
  const auto backup = QWBackup::backupWithName(*name);
  for (const auto& app : QWDataController::sharedController().appArray())
    backup->addApp(app->copyWithItems([](const QWPrefItem& item) { return item.copy(); }));
  TaskReport report;
  const TaskReceipt receipt(report, {.name = "backup", .operands = {*name}});
  const bool written = backup->writeData(report) == WriteResult::Success;
  if (!written) backup->dropUnwritten(report);
  if (report.hasFailures())
    reportResult(written ? "The first backup is incomplete" : "No first backup could be made", "", report, Retry::None);
}

void AppWindowController::toolbarTrash() {
  switchTo(Pane::Trash, "Switched to Trash pane", "QWVantoryTrashTabSwitch");
}

void AppWindowController::toolbarBackup() {
  switchTo(Pane::Backup, "Switched to Backup pane", "QWVantoryBackupTabSwitch");
}

void AppWindowController::toolbarLock() {
  switchTo(Pane::Lock, "Switched to Lock pane", "QWVantoryLockTabSwitch");
}

void AppWindowController::toolbarRestore() {
  switchTo(Pane::Restore, "Switched to Restore pane", "QWVantoryRestoreTabSwitch");
}

// The notification has the pane show itself anew.
void AppWindowController::switchTo(Pane pane, const char* logLine, const char* notification) {
  QWLog::appendLog(logLine);
  parts_.window.showPane(pane);
  NotificationCenter::shared().post(notification);
}

WriteResult AppWindowController::autoBackup(TaskReport& task) {
  QWLog::appendLog("Creating auto backup...");
  return writeAutoBackup(task, false);
}

WriteResult AppWindowController::autoBackupPrefs(TaskReport& task) {
  QWLog::appendLog("Creating auto backup of prefs...");
  return writeAutoBackup(task, true);
}

// Old ones are pruned whether or not a new one was made.
WriteResult AppWindowController::writeAutoBackup(TaskReport& task, bool preferencesOnly) {
  const WriteResult result = QWBackup::writeAutoBackup(task, preferencesOnly);
  const TaskReport pruning = QWDataController::sharedController().manageAutoBackups();
  if (pruning.hasFailures()) task.remark(formatted("Old automatic backups could not be removed. %@", pruning.causes()));
  return result;
}

}  // namespace vantory
