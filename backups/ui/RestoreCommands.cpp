// What the Restore pane does with the selected backup.

#include <chrono>
#include <utility>

#include "backups/ui/PaneSwitcher.h"
#include "backups/ui/QWBackupEditController.h"
#include "backups/ui/QWRestoreOutlineController.h"
#include "platform/Controls.h"
#include "platform/Documents.h"
#include "services/BackgroundThreads.h"
#include "services/MainThread.h"
#include "services/Paths.h"
#include "services/QWAlert.h"
#include "services/QWAuthorization.h"
#include "services/QWFileManager.h"
#include "services/QWLocalPaths.h"
#include "services/QWLog.h"
#include "services/Runtime.h"

namespace vantory {

namespace {

using namespace std::chrono_literals;

Documents& documents() {
  return Runtime::current().platform().documents;
}

// The desktop's own reason goes to the log; the person sees what to do about it.
void reportReveal(const Status& shown) {
  if (!shown) QWLog::appendLog("Unable to show the files: %@", shown.error().text);
}

void mail(const QWBackup& backup) {
  const auto folder = QWLocalPaths::tempDirectory();
  const std::string zip = paths::join(folder.value_or(""), paths::lastComponent(backup.path()) + ".zip");
  if (folder) QWFileManager::removeFile(zip, 10s);
  if (!folder || !QWFileManager::compressFile(backup.path(), zip)) {
    QWAlert::alertSheetWithMessageText("Unable to email backup", "Could not compress backup file.");
    return;
  }
  const Status sent = documents().mail(zip);
  if (sent) return;
  QWLog::appendLog("Unable to hand %@ to the mail program: %@", zip, sent.error().text);
  QWAlert::alertSheetWithMessageText("Unable to email backup", sent.error().text);
}

// The old backup is in the Trash by now, and half of a new one is worth nothing.
void reportFailedWriting(QWBackup& backup) {
  QWLog::appendLog("The backup %@ could not be written anew", backup.name());
  backup.removeCreatedFolder();
  MainThread::shared().runAndWait([] { QWDataController::sharedController().populateBackups(); });
  QWAlert::alertSheetWithMessageText("Unable to unlink the projects",
                                     "The backup could not be written anew. Where the old one is gone, it is in the "
                                     "Trash.");
}

}  // namespace

void QWRestoreOutlineController::runOnThread(std::function<void()> work) {
  BackgroundThreads::shared().start([this, work = std::move(work)] {
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
  BackgroundThreads::shared().start([this, backup] { restoreOnThread(backup); });
}

void QWRestoreOutlineController::restoreOnThread(const std::shared_ptr<QWBackup>& backup) {
  QWAuthorization::sharedController().beginTask();
  MainThread& mainThread = MainThread::shared();
  QWLog::appendLog("Beginning restoration of backup %@", backup->name());
  mainThread.runAndWait([this] { parts_.spinner.startAnimation(); });
  QWLog::appendLog("Creating auto backup...");
  QWBackup::writeAutoBackup();
  QWLog::appendLog("Restoring backup...");
  backup->restore();
  mainThread.runAndWait([this] { parts_.spinner.stopAnimation(); });
  QWLog::appendLog("Preferences restored");
  QWAlert::alertSheetWithMessageText("Preferences successfully restored", "You may now relaunch your applications.");
  mainThread.runAndWait([] { QWDataController::sharedController().manageAutoBackups(); });
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
  backup->setProjects({});
  runOnThread([backup] {
    QWAuthorization::sharedController().beginTask();
    if (backup->writeData() != WriteResult::Success) reportFailedWriting(*backup);
  });
}

void QWRestoreOutlineController::revealLinkedProjects() {
  const auto backup = selectedBackup();
  if (!backup || backup->projects().empty()) return;
  BackgroundThreads::shared().start([projects = backup->projects()] { reportReveal(documents().reveal(projects)); });
}

void QWRestoreOutlineController::sendToMail() {
  if (const auto backup = selectedBackup()) runOnThread([backup] { mail(*backup); });
}

void QWRestoreOutlineController::updateFiles() {
  if (const auto backup = selectedBackup())
    BackgroundThreads::shared().start([this, backup] { updateBackupFilesOnThread(backup); });
}

void QWRestoreOutlineController::updateBackupFilesOnThread(const std::shared_ptr<QWBackup>& backup) {
  QWAuthorization::sharedController().beginTask();
  MainThread& mainThread = MainThread::shared();
  mainThread.runAndWait([this] { parts_.spinner.startAnimation(); });
  const WriteResult written = backup->writeData(true);
  mainThread.runAndWait([this] { parts_.spinner.stopAnimation(); });
  if (written == WriteResult::Success)
    QWAlert::alertSheetWithMessageText("Files successfully updated",
                                       "This backup is now using the latest preferences on your system.");
  else
    QWAlert::alertSheetWithMessageText("Unable to update files",
                                       "An error occurred when updating files for this backup.");
}

void QWRestoreOutlineController::revealFinder() {
  QWLog::appendLog("User chose to reveal backup in Finder");
  const OutlineItemPointer row = parts_.outline.selectedItem();
  std::optional<std::string> path;
  if (std::dynamic_pointer_cast<QWAutosaveHeader>(row))
    path = QWDataController::autosaveLocation();
  else if (const auto backup = selectedBackup())
    path = backup->path();
  if (path) BackgroundThreads::shared().start([path = *path] { reportReveal(documents().reveal({path})); });
}

}  // namespace vantory
