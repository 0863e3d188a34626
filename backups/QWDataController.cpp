// Holds the catalog and the lists of the library, and tells of changes.
#include "backups/QWDataController.h"

#include "catalog/SavedSelections.h"
#include "catalog/definitions/DefinitionFiles.h"
#include "services/Runtime.h"
#include "services/log/QWLog.h"
#include "services/messages/NotificationCenter.h"

namespace vantory {

QWDataController& QWDataController::sharedController() {
  return Runtime::current().shared<QWDataController>();
}

BackupLibrary& BackupLibrary::current() {
  return QWDataController::sharedController();
}

AppList QWDataController::appArray() const {
  const std::lock_guard lock(mutex_);
  return apps_;
}

// The old list goes with the argument, after the lock.
void QWDataController::setAppArray(AppList apps) {
  const std::lock_guard lock(mutex_);
  apps_.swap(apps);
}

QWDataController::Library QWDataController::backupArray() const {
  const std::lock_guard lock(mutex_);
  return backups_;
}

void QWDataController::setBackupArray(Library backups) {
  const std::lock_guard lock(mutex_);
  backups_.swap(backups);
}

BackupList QWDataController::autoBackupArray() const {
  const std::lock_guard lock(mutex_);
  return autoBackups_;
}

// The group stands for its backups.
BackupList QWDataController::allBackups() const {
  BackupList all;
  for (const auto& node : backupArray()) {
    if (const auto backup = std::dynamic_pointer_cast<QWBackup>(node)) all.push_back(backup);
    if (const auto group = std::dynamic_pointer_cast<QWAutosaveHeader>(node))
      all.insert(all.end(), group->children().begin(), group->children().end());
  }
  return all;
}

void QWDataController::setAutoBackupArray(BackupList backups) {
  const std::lock_guard lock(mutex_);
  autoBackups_.swap(backups);
  if (!backups_.empty() && std::dynamic_pointer_cast<QWAutosaveHeader>(backups_.front()))
    backups_.front() = QWAutosaveHeader::autosaveHeaderWithChildren(autoBackups_);
}

std::optional<Error> QWDataController::libraryError() const {
  const std::lock_guard lock(mutex_);
  return libraryError_ ? libraryError_ : autosaveError_;
}

std::optional<Error> QWDataController::listingErrorOfAutoBackups() const {
  const std::lock_guard lock(mutex_);
  return autosaveError_;
}

// Keeps how the listing of one of the two folders ended.
void QWDataController::noteListing(std::optional<Error>& place, std::optional<Error> error) {
  const std::lock_guard lock(mutex_);
  place = std::move(error);
}

void QWDataController::populateApps() {
  QWLog::appendLog("Populating applications...");
  AppList apps = buildCatalog();
  const DefinedCatalog defined = readDefinedCatalog(foldersOfBackups());
  apps.insert(apps.end(), defined.apps.begin(), defined.apps.end());
  tellOnce(defined.complaints);
  setAppArray(apps);
  loadAppSelections(apps);
  NotificationCenter::shared().postOnMainThread("QWVantoryAppRefresh");
  QWLog::appendLog("App population complete");
}

// Not each time that the window builds its catalog.
void QWDataController::tellOnce(const std::vector<std::string>& complaints) {
  for (const std::string& complaint : complaints) {
    const std::lock_guard lock(mutex_);
    if (told_.insert(complaint).second) QWLog::appendLogAndPrint("%@", complaint);
  }
}

std::vector<std::string> QWDataController::complaints() const {
  const std::lock_guard lock(mutex_);
  return {told_.begin(), told_.end()};
}

std::shared_ptr<QWPrefItem> QWDataController::prefItemForKey(const std::string& key) const {
  return vantory::prefItemForKey(appArray(), key);
}

void QWDataController::saveAppSelections() const {
  vantory::saveAppSelections(appArray());
}

}  // namespace vantory
