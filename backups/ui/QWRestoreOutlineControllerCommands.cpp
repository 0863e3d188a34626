// What the Restore pane does with the selected backup.

#include <utility>

#include "backups/BackupNaming.h"
#include "backups/ui/BackupEditor.h"
#include "backups/ui/BackupNames.h"
#include "backups/ui/Controls.h"
#include "backups/ui/PaneSwitcher.h"
#include "backups/ui/QWRestoreOutlineController.h"
#include "base/Format.h"
#include "base/Text.h"
#include "services/TaskReport.h"
#include "services/files/QWAuthorization.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"
#include "services/messages/QWAlert.h"
#include "services/receipts/TaskReceipt.h"
#include "services/threads/MainThread.h"

namespace vantory {

namespace {

constexpr const char* kNotUpdated = "Unable to update files";

// Lists the library anew too, so that the pane no longer offers it.
void reportVanished(const QWBackup& backup) {
  QWDataController::sharedController().populateBackups();
  reportFailure("The backup is no longer there", formatted("%@ has been moved or deleted.", backup.path()));
}

// A backup is changed by writing it anew, from the files of what is known here.
bool refuseToWriteAnew(const QWBackup& backup) {
  if (backup.unknown().empty()) return false;
  reportFailure(formatted("\"%@\" cannot be changed here", backup.name()),
                unknownInWords(backup) +
                    " They would be left out. Install their catalog files first, or change the backup on the machine "
                    "where it was made.");
  return true;
}

// The list had dropped it already.
void reportFailedRemoval(const Error& cause) {
  QWDataController::sharedController().populateBackups();
  reportFailure("Unable to remove the backup",
                formatted("It could not be moved to the Trash, and stays in the library.\n\n%@", cause.text));
}

// Half of a new backup is worth nothing.
bool reportFailedWriting(QWBackup& backup, TaskReport& report) {
  backup.dropUnwritten(report);
  return reportResult("Unable to unlink the projects",
                      formatted("The backup \"%@\" could not be written anew.", backup.name()), report);
}

// Not of blanks around it, which nobody sees.
void tellKeptName(const std::string& wanted, const std::string& kept, const std::string& cleaned) {
  if (kept == trimmed(wanted)) return;
  QWAlert::alertSheetWithMessageText(keptNameInWords(wanted, kept), kept == cleaned ? kLeftOutOfNames : kNameIsTaken);
}

bool askToUpdate(const QWBackup& backup) {
  return QWAlert::alertSheetWithMessageText(
             {.messageText = formatted("Do you want to update the files of \"%@\"?", backup.name()),
              .defaultButton = "Update",
              .alternateButton = "Cancel",
              .informativeText = nameAndDate(backup) +
                                 ". Its copies are replaced by your present preferences, and placed in the Trash."}) ==
         QWAlert::Default;
}

}  // namespace

void QWRestoreOutlineController::runOnThread(std::function<void()> work) {
  startTask([this, work = std::move(work)] {
    QWAuthorization::sharedController().beginTask();
    MainThread& mainThread = MainThread::shared();
    mainThread.runAndWait([this] { parts_.spinner.startAnimation(); });
    work();
    mainThread.runAndWait([this] { parts_.spinner.stopAnimation(); });
  });
}

void QWRestoreOutlineController::restore() {
  const auto backup = selectedBackup();
  if (!backup) return;
  if (QWAlert::alertSheetWithMessageText(
          {.messageText = "Are you sure you wish to restore this backup?",
           .defaultButton = "Restore",
           .alternateButton = "Cancel",
           .informativeText = "This will overwrite any current preferences with those stored in the backup.\n" +
                              nameAndDate(*backup) + "." + warningOf(*backup)}) != QWAlert::Default)
    return;
  startTask([this, backup] {
    if (QWFileManager::isMissingAtPath(backup->path())) return reportVanished(*backup);
    restoreOnThread(backup);
  });
}

void QWRestoreOutlineController::restoreOnThread(const std::shared_ptr<QWBackup>& backup) {
  bool isBackedUp = false;
  while (restoreOnce(*backup, isBackedUp)) {
  }
  reportFailedPruning(QWDataController::sharedController().manageAutoBackups());
}

// The automatic backup comes first. One that an earlier try has made is enough: another would hold what that has half
// done, and push it out. What an application that was passed over has saved since goes to the Trash, as all that a
// restore replaces. Where the backup fails the restore goes on, and the person is told of it at the end.
bool QWRestoreOutlineController::restoreOnce(QWBackup& backup, bool& isBackedUp) {
  QWAuthorization::sharedController().beginTask();
  MainThread& mainThread = MainThread::shared();
  QWLog::appendLog("Beginning restoration of backup %@", backup.name());
  mainThread.runAndWait([this] { parts_.spinner.startAnimation(); });
  TaskReport report;
  if (!isBackedUp) {
    QWLog::appendLog("Creating auto backup...");
    isBackedUp = QWBackup::writeAutoBackup(report) == WriteResult::Success;
  }
  QWLog::appendLog("Restoring backup...");
  TaskReceipt receipt(report, {.name = "restore", .operands = {backup.path()}});
  backup.restore(report);
  receipt.end();
  mainThread.runAndWait([this] { parts_.spinner.stopAnimation(); });
  QWLog::appendLog("Preferences restored");
  if (const auto again = reportIncompleteRestore(report, Retry::Offered)) return *again;
  QWAlert::alertSheetWithMessageText("Preferences successfully restored",
                                     withCauses("You may now relaunch your applications.", report));
  return false;
}

void QWRestoreOutlineController::editBackup() {
  const auto backup = selectedBackup();
  if (!backup || !dialog_ || refuseToWriteAnew(*backup)) return;
  QWLog::appendLog("User chose to edit backup");
  parts_.panes.toolbarBackup();
  dialog_->editBackup(backup);
}

void QWRestoreOutlineController::linkProject() {
  const auto backup = selectedBackup();
  if (!backup || !dialog_ || refuseToWriteAnew(*backup)) return;
  dialog_->editBackup(backup);
  dialog_->expandProjectView();
}

// The projects stand in the settings file, and that is written only with the whole backup.
void QWRestoreOutlineController::unlinkProjects() {
  const auto backup = selectedBackup();
  if (!backup || refuseToWriteAnew(*backup)) return;
  runOnThread([backup] {
    if (QWFileManager::isMissingAtPath(backup->path())) return reportVanished(*backup);
    MainThread::shared().runAndWait([&] { backup->setProjects({}); });
    const auto write = [&] {
      TaskReport report;
      const TaskReceipt receipt(report, {.name = "backup", .operands = {backup->name()}});
      if (backup->writeData(report) != WriteResult::Success) return !reportFailedWriting(*backup, report);
      tellNotices(report);
      return report.isWhole() || !reportWriting("Not everything could be backed up", "", report);
    };
    while (!write()) {
    }
  });
}

void QWRestoreOutlineController::updateFiles() {
  const auto backup = selectedBackup();
  if (!backup) return;
  if (!backup->isComplete())
    return reportFailure(kNotUpdated, backup->flawInWords() + ". Only a backup that is whole can be updated.");
  if (askToUpdate(*backup)) startTask([this, backup] { updateBackupFilesOnThread(backup); });
}

void QWRestoreOutlineController::updateBackupFilesOnThread(const std::shared_ptr<QWBackup>& backup) {
  bool again = true;
  while (again) again = updateOnce(*backup);
}

// A text of success only where every file was replaced.
bool QWRestoreOutlineController::updateOnce(QWBackup& backup) {
  QWAuthorization::sharedController().beginTask();
  MainThread& mainThread = MainThread::shared();
  mainThread.runAndWait([this] { parts_.spinner.startAnimation(); });
  TaskReport report;
  TaskReceipt receipt(report, {.name = "update", .operands = {backup.name()}});
  const WriteResult written = backup.writeData(report, true);
  receipt.end();
  mainThread.runAndWait([this] { parts_.spinner.stopAnimation(); });
  if (written != WriteResult::Success || !report.isWhole())
    return reportWriting(kNotUpdated, "An error occurred when updating files for this backup.", report);
  if (report.count(FileReport::Outcome::Done, FileAction::Copy) == 0) {
    reportFailure(kNotUpdated, QWBackup::kNothingToUpdate);
    return false;
  }
  QWAlert::alertSheetWithMessageText("Files successfully updated",
                                     "This backup is now using the latest preferences on your system.");
  return false;
}

// A name that is taken gets a number.
void QWRestoreOutlineController::rename(const std::shared_ptr<QWBackup>& backup, const std::string& name) {
  const std::string cleaned = QWFileManager::validateFilename(name);
  if (cleaned.empty() || cleaned == backup->name()) return;
  if (!backup->isAutosave() && refuseNameOfAutomaticBackups(cleaned, AlertParent::MainWindow)) return;
  runOnThread([this, backup, name, cleaned] {
    const auto renamed = recordInLibrary(backup);
    TaskReport report;
    const TaskReceipt receipt(report, {.name = "rename", .operands = {renamed->name(), cleaned}});
    const auto path = QWDataController::renameBackup(*renamed, cleaned, report);
    if (!path) return reportFailure("Unable to rename the backup", path.error().text);
    const std::string kept = backupName(*path);
    MainThread::shared().runAndWait([&] {
      // Commands that wait for their turn know the one that was selected when they were given.
      for (const auto& record : {renamed, backup}) {
        record->setName(kept);
        record->setPath(*path);
        // The default is known by its folder's name.
        record->updateDefault();
      }
      parts_.outline.reloadItem(std::make_shared<RecordRow>(renamed), false);
      showAge();
      selectionDidChange();
    });
    tellKeptName(name, kept, cleaned);
    tellNotices(report);
  });
}

bool QWRestoreOutlineController::keyUp(OutlineKey key) {
  const auto backup = rowAs<QWBackup>(parts_.outline.selectedItem());
  if (key != OutlineKey::Delete || !backup) return false;
  QWLog::appendLog("User tried to delete backup %@. Asking for confirmation.", backup->name());
  if (QWAlert::alertSheetWithMessageText({.messageText = "Are you sure you wish to remove this backup?",
                                          .defaultButton = "Remove",
                                          .alternateButton = "Cancel",
                                          .informativeText = "The backup will be placed in the Trash.\n" +
                                                             nameAndDate(*backup) + "."}) != QWAlert::Default)
    return true;
  QWLog::appendLog("User chose to remove backup");
  runOnThread([this, backup] {
    const auto removed = recordInLibrary(backup);
    TaskReport report;
    const TaskReceipt receipt(report, {.name = "remove", .operands = {removed->name()}});
    const auto trashed = QWDataController::sharedController().removeBackup(removed, report);
    reload();
    if (!trashed) reportFailedRemoval(trashed.error());
  });
  return true;
}

}  // namespace vantory
