// Fills the backup dialog and keeps its list of projects.
#include "backups/ui/QWBackupEditController.h"

#include <algorithm>

#include "backups/BackupLibrary.h"
#include "backups/QWDataController.h"
#include "backups/ui/BackupDialogView.h"
#include "backups/ui/BackupNames.h"
#include "backups/ui/Controls.h"
#include "backups/ui/FailureReport.h"
#include "backups/ui/ProjectFiles.h"
#include "backups/ui/QWRestoreOutlineController.h"
#include "backups/ui/SurveyedRows.h"
#include "backups/ui/Surveyor.h"
#include "base/Format.h"
#include "base/Paths.h"
#include "base/Text.h"
#include "catalog/ProjectKinds.h"
#include "services/QWLocalPaths.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"
#include "services/threads/BackgroundThreads.h"
#include "services/threads/MainThread.h"

namespace vantory {

namespace {

constexpr const char* kRewritten =
    "The backup is written anew from the preference files that are on disk now. The old one goes to the Trash.";

}  // namespace

QWBackupEditController::QWBackupEditController(Parts parts)
    : parts_(std::move(parts)),
      surveyed_(NotificationCenter::shared().observe(Surveyor::kRefresh, [this] { showContents(); })) {}

void QWBackupEditController::showBackupDialog() {
  QWLog::appendLog("Showing backup dialog...");
  contractProjectView();
  if (parts_.dialog.name().empty()) parts_.dialog.setName(QWLocalPaths::username().value_or(""));
  parts_.dialog.setRemark("");
  projects_.clear();
  show("Backup");
}

// The list of projects is open where there are any.
void QWBackupEditController::editBackup(const std::shared_ptr<QWBackup>& backup) {
  QWLog::appendLog("User began editing backup %@", backup->name());
  parts_.dialog.setName(backup->name());
  parts_.dialog.setRemark(kRewritten);
  projects_ = backup->projects();
  parts_.dialog.setProjectListShown(!projects_.empty());
  editedBackup_ = backup;
  show("Edit");
}

// Opens the dialog on the projects that its list holds now.
void QWBackupEditController::show(const std::string& confirmTitle) {
  parts_.dialog.setProjects(projects_);
  parts_.dialog.setHandlingNoticeShown(false);
  showContents();
  nameDidChange();
  parts_.dialog.show(confirmTitle);
  showHandlingNotice();
}

// An edited backup is written with all that it holds, whatever is ticked in it.
void QWBackupEditController::showContents() {
  parts_.dialog.setContents(editedBackup_
                                ? contentsInWords(editedBackup_->children(), Ticks::All)
                                : contentsInWords(QWDataController::sharedController().appArray(), Ticks::Heeded));
}

// Not of blanks around it, which nobody sees.
void QWBackupEditController::nameDidChange() {
  const std::string wanted = parts_.dialog.name();
  const std::string kept = QWFileManager::validateFilename(wanted);
  const bool isTold = !kept.empty() && kept != trimmed(wanted);
  parts_.dialog.setKeptName(isTold ? keptNameInWords(wanted, kept) : "");
}

// The desktop may take its time to say which program opens projects.
void QWBackupEditController::showHandlingNotice() {
  BackgroundThreads::shared().start([this] {
    const bool handles = parts_.handlesProjects();
    MainThread::shared().runAndWait([&] { parts_.dialog.setHandlingNoticeShown(!handles); });
  });
}

// The row of the edited backup is selected again.
void QWBackupEditController::cancelBackup() {
  parts_.dialog.close();
  if (!editedBackup_) return;
  parts_.restoreController.selectBackupWithPath(editedBackup_->path());
  editedBackup_ = nullptr;
}

// Each file that is refused is named with its reason; the others are added all the same.
void QWBackupEditController::addProject() {
  const auto chosen = parts_.chooser.choose({.extensions = projectExtensions(BackupLibrary::current().appArray()),
                                             .several = true,
                                             .kind = "Projects",
                                             .others = true});
  std::string refused;
  for (const std::string& project : chosen) {
    if (const auto reason = reasonNotToLink(project)) {
      refused += formatted(refused.empty() ? "%@ %@" : " %@ %@", paths::lastComponent(project), *reason);
      continue;
    }
    QWLog::appendLog("User added project %@ for handling", project);
    if (std::find(projects_.begin(), projects_.end(), project) == projects_.end()) projects_.push_back(project);
  }
  parts_.dialog.setProjects(projects_);
  if (!refused.empty()) reportFailure("Not linked", refused, AlertParent::BackupDialog);
}

void QWBackupEditController::removeProject() {
  std::vector<std::size_t> rows = parts_.dialog.selectedProjects();
  if (rows.empty()) return;
  QWLog::appendLog("User removed project(s) from handling");
  // From the end, so that the rows before keep their numbers.
  std::sort(rows.rbegin(), rows.rend());
  for (const std::size_t row : rows)
    if (row < projects_.size()) projects_.erase(projects_.begin() + static_cast<std::ptrdiff_t>(row));
  parts_.dialog.setProjects(projects_);
}

// The notice goes at once and comes back where the desktop refused.
void QWBackupEditController::enableProjectHandling() {
  QWLog::appendLog("User enabled project handling");
  parts_.dialog.setHandlingNoticeShown(false);
  BackgroundThreads::shared().start([this] {
    if (parts_.changeHandlerToVantory()) return;
    MainThread::shared().runAndWait([this] { parts_.dialog.setHandlingNoticeShown(true); });
    reportFailure("Projects are still opened by other applications",
                  "The desktop did not accept Vantory for all kinds of projects.", AlertParent::BackupDialog);
  });
}

void QWBackupEditController::expandProjectView() {
  parts_.dialog.setProjectListShown(true);
}

void QWBackupEditController::contractProjectView() {
  parts_.dialog.setProjectListShown(false);
}

}  // namespace vantory
