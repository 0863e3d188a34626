// What the Restore pane does with the selected backup.

#include <chrono>
#include <utility>

#include "backups/BackupNaming.h"
#include "backups/FailedBackup.h"
#include "backups/ui/BackupNames.h"
#include "backups/ui/FailureReport.h"
#include "backups/ui/PaneSwitcher.h"
#include "backups/ui/QWBackupEditController.h"
#include "backups/ui/QWRestoreOutlineController.h"
#include "base/Format.h"
#include "base/Paths.h"
#include "platform/Controls.h"
#include "services/FailureTally.h"
#include "services/files/QWAuthorization.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"
#include "services/messages/QWAlert.h"
#include "services/threads/BackgroundThreads.h"
#include "services/threads/MainThread.h"

namespace vantory {

namespace {

using namespace std::chrono_literals;

void reportVanished(const QWBackup& backup) {
  QWDataController::sharedController().populateBackups();
  reportFailure("The backup is no longer there", formatted("%@ has been moved or deleted.", backup.path()));
}

// The list had dropped it already.
void reportFailedRemoval() {
  QWDataController::sharedController().populateBackups();
  reportFailure("Unable to remove the backup", "It could not be moved to the Trash, and stays in the library.");
}

// The old backup is in the Trash by now, and half of a new one is worth nothing.
void reportFailedWriting(QWBackup& backup) {
  dropFailedBackup(backup);
  reportFailure("Unable to unlink the projects",
                formatted("The backup \"%@\" could not be written anew. Where the old one is gone, it is in the Trash.",
                          backup.name()));
}

}  // namespace

void QWRestoreOutlineController::runOnThread(std::function<void()> work) {
  SerialWork::tasks().add([this, work = std::move(work)] {
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
           .informativeText = "This will overwrite any current preferences with those stored in the backup."}) !=
      QWAlert::Default)
    return;
  SerialWork::tasks().add([this, backup] {
    if (QWFileManager::isMissingAtPath(backup->path())) return reportVanished(*backup);
    restoreOnThread(backup);
  });
}

void QWRestoreOutlineController::restoreOnThread(const std::shared_ptr<QWBackup>& backup) {
  QWAuthorization::sharedController().beginTask();
  MainThread& mainThread = MainThread::shared();
  QWLog::appendLog("Beginning restoration of backup %@", backup->name());
  mainThread.runAndWait([this] { parts_.spinner.startAnimation(); });
  QWLog::appendLog("Creating auto backup...");
  QWBackup::writeAutoBackup();
  QWLog::appendLog("Restoring backup...");
  const std::size_t failures = FailureTally::shared().count();
  backup->restore();
  mainThread.runAndWait([this] { parts_.spinner.stopAnimation(); });
  QWLog::appendLog("Preferences restored");
  QWAlert::alertSheetWithMessageText("Preferences successfully restored", "You may now relaunch your applications.");
  reportIncompleteRestore(failures);
  QWDataController::sharedController().manageAutoBackups();
}

void QWRestoreOutlineController::editBackup() {
  const auto backup = selectedBackup();
  if (!backup || !dialog_) return;
  QWLog::appendLog("User chose to edit backup");
  parts_.panes.toolbarBackup();
  dialog_->editBackup(backup);
}

void QWRestoreOutlineController::linkProject() {
  const auto backup = selectedBackup();
  if (!backup || !dialog_) return;
  dialog_->editBackup(backup);
  dialog_->expandProjectView();
}

void QWRestoreOutlineController::unlinkProjects() {
  const auto backup = selectedBackup();
  if (!backup) return;
  runOnThread([backup] {
    if (QWFileManager::isMissingAtPath(backup->path())) return reportVanished(*backup);
    MainThread::shared().runAndWait([&] { backup->setProjects({}); });
    if (backup->writeData() != WriteResult::Success) reportFailedWriting(*backup);
  });
}

void QWRestoreOutlineController::updateFiles() {
  if (const auto backup = selectedBackup())
    SerialWork::tasks().add([this, backup] { updateBackupFilesOnThread(backup); });
}

void QWRestoreOutlineController::updateBackupFilesOnThread(const std::shared_ptr<QWBackup>& backup) {
  QWAuthorization::sharedController().beginTask();
  MainThread& mainThread = MainThread::shared();
  mainThread.runAndWait([this] { parts_.spinner.startAnimation(); });
  const WriteResult written = backup->writeData(true);
  mainThread.runAndWait([this] { parts_.spinner.stopAnimation(); });
  if (written != WriteResult::Success)
    return reportFailure("Unable to update files", "An error occurred when updating files for this backup.");
  QWAlert::alertSheetWithMessageText("Files successfully updated",
                                     "This backup is now using the latest preferences on your system.");
}

void QWRestoreOutlineController::rename(const std::shared_ptr<QWBackup>& backup, const std::string& name) {
  const std::string cleaned = QWFileManager::validateFilename(name);
  if (cleaned.empty() || cleaned == backup->name()) return;
  if (!backup->isAutosave() && refuseNameOfAutomaticBackups(cleaned, AlertParent::MainWindow)) return;
  runOnThread([this, backup, cleaned] {
    const auto renamed = recordInLibrary(backup);
    const std::string free = freeNameFor(*renamed, cleaned);
    const std::string path = paths::join(paths::parent(renamed->path()), backupFileName(free));
    if (!QWFileManager::moveFile(renamed->path(), path, 20s)) return;
    MainThread::shared().runAndWait([&] {
      // Commands that wait for their turn know the one that was selected when they were given.
      for (const auto& record : {renamed, backup}) {
        record->setName(free);
        record->setPath(path);
        // The default is known by its folder's name.
        record->updateDefault();
      }
      parts_.outline.reloadItem(std::make_shared<RecordRow>(renamed), false);
      selectionDidChange();
    });
  });
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
  runOnThread([this, backup] {
    const auto removed = recordInLibrary(backup);
    QWDataController::sharedController().removeBackup(removed);
    reload();
    if (!QWFileManager::isMissingAtPath(removed->path())) reportFailedRemoval();
  });
  return true;
}

}  // namespace vantory
