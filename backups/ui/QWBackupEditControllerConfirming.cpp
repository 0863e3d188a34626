// What the backup dialog's confirming button does.

#include <chrono>
#include <utility>

#include "backups/BackupNaming.h"
#include "backups/LibraryHold.h"
#include "backups/QWDataController.h"
#include "backups/ui/BackupDialogView.h"
#include "backups/ui/BackupNames.h"
#include "backups/ui/FailureReport.h"
#include "backups/ui/QWBackupEditController.h"
#include "backups/ui/QWBackupOutlineController.h"
#include "base/Format.h"
#include "base/Paths.h"
#include "services/QWLocalPaths.h"
#include "services/TaskReport.h"
#include "services/files/QWAuthorization.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"
#include "services/messages/QWAlert.h"
#include "services/receipts/TaskReceipt.h"
#include "services/threads/MainThread.h"

namespace vantory {

namespace {

using namespace std::chrono_literals;

// As people write it: with "~" for the home folder.
std::string withTilde(const std::string& path) {
  const auto home = QWLocalPaths::userDirectory();
  if (!home || !paths::isWithin(path, *home)) return path;
  return std::string("~").append(path, home->size());
}

// With the users that are ticked; null for an item that is not.
std::shared_ptr<QWPrefItem> copyOfTicked(const QWPrefItem& item) {
  if (item.selected() == Off) return nullptr;
  auto copy = item.copy();
  copy->setUsers({});
  for (const auto& user : item.users())
    if (user->selected() == On) copy->addUser(user->copy());
  return copy;
}

// A record of what is ticked now; its items are its own, so that later ticks change nothing in it.
std::shared_ptr<QWBackup> newBackup(const std::string& name, const std::string& target) {
  QWLog::appendLog("Creating new backup...");
  auto backup = QWBackup::backupWithName(name, target);
  for (const auto& app : QWDataController::sharedController().appArray())
    if (app->selected() != Off) backup->addApp(app->copyWithItems(copyOfTicked));
  return backup;
}

// Whether what bears the name may go to the Trash.
bool askToReplace(const std::string& name, const std::string& target) {
  QWLog::appendLog("Backup %@ exists. Asking the user to confirm replacement.", target);
  const int answer = QWAlert::alertSheetWithMessageText(
      {.messageText = formatted("\"%@\" already exists. Do you want to replace it?", name),
       .defaultButton = "Replace",
       .alternateButton = "Cancel",
       .informativeText =
           formatted("A file with the same name already exists at %@. Replacing it will send the old file to the "
                     "Trash and put the new one in its place.\n%@.",
                     withTilde(paths::parent(target)), nameAndDate(*QWBackup::backupWithName(name, target))),
       .parentWindow = AlertParent::BackupDialog});
  QWLog::appendLog(answer == QWAlert::Default ? "User chose to replace" : "User cancelled backup");
  return answer == QWAlert::Default;
}

// Whether something else bears the name. On a disk that takes no heed of case it may be the edited backup itself.
bool isAnotherBackup(const std::string& target, const std::string& edited) {
  return QWFileManager::itemExistsAtPath(target) && !QWFileManager::isSameItem(edited, target);
}

// Nothing to do for a new backup, and for one that keeps its name. What bears the new name goes to the Trash. A backup
// that cannot be renamed is written under its old name.
void rename(QWBackup& backup, const std::string& name, const std::string& target, TaskReport& report) {
  if (backup.name() == name) return;
  QWLog::appendLog("Backup is being renamed from %@ to %@", backup.name(), name);
  std::string earlier;
  if (isAnotherBackup(target, backup.path())) {
    report.planned(FileAction::Trash, std::vector{target});
    const auto place = QWFileManager::trashFile(target, 10s, report);
    if (!place) report.failed(FileAction::Trash, target, place.error());
    if (!place) return reportFailure("Unable to rename the backup", place.error().text);
    earlier = *place;
  }
  report.planned(FileAction::Move, {{.path = backup.path(), .place = target}});
  const Status moved = QWFileManager::moveFile(backup.path(), target, 10s, report);
  if (moved || !QWFileManager::returnFile(earlier, target, 10s, report)) noteCleared(target, earlier, report);
  report.add(FileAction::Move, backup.path(), moved, {}, target);
  if (!moved) return reportFailure("Unable to rename the backup", moved.error().text);
  MainThread::shared().runAndWait([&] {
    backup.setName(name);
    backup.setPath(target);
  });
}

}  // namespace

// Whether the edited backup keeps its name, so that nothing else is replaced.
bool QWBackupEditController::isEditedName(const std::string& name) const {
  return editedBackup_ && editedBackup_->name() == name;
}

// Tells the person what is wrong where it is not.
bool QWBackupEditController::isAcceptable(const std::string& name) const {
  if (name.empty()) {
    QWLog::appendLog("You must enter a name for this backup. The name cannot be blank.");
    QWAlert::alertSheetWithMessageText("You must enter a name for this backup", "The backup name cannot be left blank.",
                                       AlertParent::BackupDialog);
    return false;
  }
  return isEditedName(name) || !refuseNameOfAutomaticBackups(name, AlertParent::BackupDialog);
}

// Main thread up to the writing, which takes its turn among the tasks.
void QWBackupEditController::backup() {
  QWLog::appendLog("User started backup");
  const std::string name = QWFileManager::validateFilename(parts_.dialog.name());
  if (!isAcceptable(name)) return;
  const auto location = QWDataController::vantoryBackupLocation();
  if (!location)
    return reportFailure("There is no folder for backups", "Please choose one in the settings.",
                         AlertParent::BackupDialog);
  const std::string target = paths::join(*location, backupFileName(name));
  const bool replaces = !isEditedName(name) && isAnotherBackup(target, editedBackup_ ? editedBackup_->path() : "");
  if (replaces && !askToReplace(name, target)) return;

  // From here on the dialog is free for another backup.
  const auto edited = std::exchange(editedBackup_, nullptr);
  const auto written = edited ? edited : newBackup(name, target);
  QWBackupOutlineController& writer = parts_.backupController;
  writer.reload();
  parts_.dialog.close();
  startTask([&writer, written, name, target, projects = projects_] {
    QWAuthorization::sharedController().beginTask();
    // Not earlier: the task before may have been writing the same record.
    MainThread::shared().runAndWait([&] { written->setProjects(projects); });
    TaskReport report;
    TaskReceipt receipt(report, {.name = "rename", .operands = {written->name(), name}});
    rename(*written, name, target, report);
    receipt.end();
    writer.writeBackupOnThread(written);
  });
}

}  // namespace vantory
