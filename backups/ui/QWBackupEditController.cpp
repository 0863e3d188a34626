#include "backups/ui/QWBackupEditController.h"

#include <algorithm>
#include <chrono>

#include "backups/QWDataController.h"
#include "backups/ui/BackupDialogView.h"
#include "backups/ui/QWBackupOutlineController.h"
#include "backups/ui/QWRestoreOutlineController.h"
#include "platform/Controls.h"
#include "services/BackgroundThreads.h"
#include "services/Format.h"
#include "services/Paths.h"
#include "services/QWAlert.h"
#include "services/QWFileManager.h"
#include "services/QWLocalPaths.h"
#include "services/QWLog.h"

namespace vantory {

namespace {

using namespace std::chrono_literals;

constexpr const char* kRewritten =
    "The backup is written anew from the preference files that are on disk now. The old one goes to the Trash.";

const std::vector<std::string> kProjectExtensions = {"fcp",     "colorproj", "stap",       "stmp",
                                                     "dspproj", "ipr",       "compressor", "motn"};

// As people write it: with "~" for the home folder.
std::string withTilde(const std::string& path) {
  const auto home = QWLocalPaths::userDirectory();
  if (!home || !paths::isWithin(path, *home)) return path;
  return std::string("~").append(path, home->size());
}

std::shared_ptr<QWPrefItem> copyForBackup(const QWPrefItem& item) {
  auto copy = item.copy();
  copy->setUsers({});
  for (const auto& user : item.users())
    if (user->selected() == On) copy->addUser(user->copy());
  return copy;
}

}  // namespace

void QWBackupEditController::showBackupDialog() {
  QWLog::appendLog("Showing backup dialog...");
  contractProjectView();
  if (parts_.dialog.name().empty()) parts_.dialog.setName(QWLocalPaths::username().value_or(""));
  parts_.dialog.setRemark("");
  projects_.clear();
  show("Backup");
}

void QWBackupEditController::editBackup(const std::shared_ptr<QWBackup>& backup) {
  QWLog::appendLog("User began editing backup %@", backup->name());
  parts_.dialog.setName(backup->name());
  parts_.dialog.setRemark(kRewritten);
  projects_ = backup->projects();
  parts_.dialog.setProjectListShown(!projects_.empty());
  editedBackup_ = backup;
  show("Edit");
}

void QWBackupEditController::show(const std::string& confirmTitle) {
  parts_.dialog.setProjects(projects_);
  parts_.dialog.setHandlingNoticeShown(!parts_.handlesProjects());
  parts_.dialog.show(confirmTitle);
}

bool QWBackupEditController::isAcceptable(const std::string& name) const {
  if (name.empty()) {
    QWLog::appendLog("You must enter a name for this backup. The name cannot be blank.");
    QWAlert::alertSheetWithMessageText("You must enter a name for this backup", "The backup name cannot be left blank.",
                                       AlertParent::BackupDialog);
    return false;
  }
  // Listing the library would take it for an automatic one.
  if (name.starts_with("Auto Backup ") && !(editedBackup_ && editedBackup_->isAutosave())) {
    QWAlert::alertSheetWithMessageText("Please choose another name for this backup",
                                       "Names that begin with \"Auto Backup \" are those of automatic backups.",
                                       AlertParent::BackupDialog);
    return false;
  }
  return true;
}

bool QWBackupEditController::makesRoomFor(const std::string& name, const std::string& target) const {
  if (!QWFileManager::itemExistsAtPath(target) || (editedBackup_ && editedBackup_->name() == name)) return true;
  QWLog::appendLog("Backup %@ exists. Asking the user to confirm replacement.", target);
  const std::string location = withTilde(QWDataController::vantoryBackupLocation().value_or(""));
  const int answer = QWAlert::alertSheetWithMessageText(
      {.messageText = formatted("\"%@\" already exists. Do you want to replace it?", name),
       .defaultButton = "Replace",
       .alternateButton = "Cancel",
       .informativeText = formatted("A file with the same name already exists at %@. Replacing it will send the "
                                    "old file to the Trash and put the new one in its place.",
                                    location),
       .parentWindow = AlertParent::BackupDialog});
  if (answer != QWAlert::Default) {
    QWLog::appendLog("User cancelled backup");
    return false;
  }
  QWLog::appendLog("User chose to replace");
  QWFileManager::trashFile(target, 10s);
  return true;
}

void QWBackupEditController::backup() {
  QWLog::appendLog("User started backup");
  const std::string name = QWFileManager::validateFilename(parts_.dialog.name());
  const auto location = QWDataController::vantoryBackupLocation();
  if (!location || !isAcceptable(name)) return;
  const std::string target = paths::join(*location, name + ".vnt");
  if (!makesRoomFor(name, target)) return;

  if (editedBackup_) renameEdited(name, target);
  const auto written = editedBackup_ ? editedBackup_ : newBackup(name, target);
  written->setProjects(projects_);
  parts_.backupController.reload();
  parts_.dialog.close();
  QWBackupOutlineController& writer = parts_.backupController;
  BackgroundThreads::shared().start([&writer, written] { writer.writeBackupOnThread(written); });
  editedBackup_ = nullptr;
}

void QWBackupEditController::renameEdited(const std::string& name, const std::string& target) {
  if (editedBackup_->name() == name) return;
  QWLog::appendLog("Backup is being renamed from %@ to %@", editedBackup_->name(), name);
  if (!QWFileManager::moveFile(editedBackup_->path(), target, 10s)) return;
  editedBackup_->setName(name);
  editedBackup_->setPath(target);
}

std::shared_ptr<QWBackup> QWBackupEditController::newBackup(const std::string& name, const std::string& target) const {
  QWLog::appendLog("Creating new backup...");
  auto backup = QWBackup::backupWithName(name, target);
  for (const auto& app : QWDataController::sharedController().appArray()) {
    if (app->selected() == Off) continue;
    auto appCopy = app->copyWithoutChildren();
    for (const auto& item : app->children())
      if (item->selected() != Off) appCopy->addItem(copyForBackup(*item));
    backup->addApp(appCopy);
  }
  return backup;
}

void QWBackupEditController::cancelBackup() {
  parts_.dialog.close();
  if (!editedBackup_) return;
  parts_.restoreController.selectBackupWithPath(editedBackup_->path());
  editedBackup_ = nullptr;
}

void QWBackupEditController::addProject() {
  for (const std::string& project : parts_.chooser.choose({.extensions = kProjectExtensions, .several = true})) {
    QWLog::appendLog("User added project %@ for handling", project);
    if (std::find(projects_.begin(), projects_.end(), project) == projects_.end()) projects_.push_back(project);
  }
  parts_.dialog.setProjects(projects_);
}

void QWBackupEditController::removeProject() {
  std::vector<std::size_t> rows = parts_.dialog.selectedProjects();
  if (rows.empty()) return;
  QWLog::appendLog("User removed project(s) from handling");
  std::sort(rows.rbegin(), rows.rend());
  for (const std::size_t row : rows)
    if (row < projects_.size()) projects_.erase(projects_.begin() + static_cast<std::ptrdiff_t>(row));
  parts_.dialog.setProjects(projects_);
}

void QWBackupEditController::enableProjectHandling() {
  QWLog::appendLog("User enabled project handling");
  parts_.dialog.setHandlingNoticeShown(false);
  parts_.changeHandlerToVantory();
}

void QWBackupEditController::expandProjectView() {
  parts_.dialog.setProjectListShown(true);
}

void QWBackupEditController::contractProjectView() {
  parts_.dialog.setProjectListShown(false);
}

}  // namespace vantory
