// How the library is listed.
#include <algorithm>

#include "backups/BackupNaming.h"
#include "backups/BackupReader.h"
#include "backups/LibraryFolder.h"
#include "backups/LibraryHold.h"
#include "backups/QWDataController.h"
#include "base/Format.h"
#include "base/Paths.h"
#include "base/Text.h"
#include "platform/FileSystem.h"
#include "services/Runtime.h"
#include "services/TaskReport.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"
#include "services/messages/NotificationCenter.h"
#include "services/settings/QWUserDefaults.h"
#include "services/settings/SettingsKeys.h"
#include "services/threads/BackgroundThreads.h"
#include "services/threads/MainThread.h"

namespace vantory {

namespace {

using namespace std::chrono_literals;

// The date of a backup's folder, a link to one included; none for everything else, which is never listed.
std::optional<Timestamp> folderDate(const std::string& path) {
  const auto info = Runtime::current().platform().files.info(path, Links::Follow);
  if (!info || info->type != FileType::Folder) return std::nullopt;
  return info->modified;
}

// Never from under another process that writes it. One that stays where it is comes again at the next listing.
bool moveUnlessHeld(const std::string& path, const std::string& target) {
  const auto isTaken = [](const auto& hold) { return !hold && hold.error().code == std::errc::timed_out; };
  // Held too while a new backup is made, until that one is.
  const auto libraryHold = holdBackupFolder(paths::parent(path));
  const auto hold = Runtime::current().platform().files.holdFolder(path, 0s);
  return !isTaken(libraryHold) && !isTaken(hold) && QWFileManager::moveFile(path, target, 10s);
}

// Where the backup lies after its older extension gave way to today's, if that name was free.
std::string withCurrentExtension(const std::string& path) {
  if (lowerCased(paths::extension(path)) != kOlderBackupExtension) return path;
  const std::string current = withBackupExtension(path);
  if (QWFileManager::itemExistsAtPath(current)) return path;
  return moveUnlessHeld(path, current) ? current : path;
}

// With a number behind its name where another has that.
void moveToAutosaves(const std::string& path) {
  const auto folder = QWDataController::autosaveLocation();
  if (!folder || !QWFileManager::createDirectory(*folder)) return;
  const std::string target = paths::join(*folder, paths::lastComponent(path));
  (void)moveUnlessHeld(path, QWFileManager::uniqueFilename(target));
}

// The backups of a folder, or why it could not be listed.
struct Listing {
  BackupList backups;
  std::optional<Error> error;
};

// The person is told of a folder that cannot be read.
Result<std::vector<std::string>> toldBackupNamesIn(const std::string& folder) {
  auto names = backupNamesIn(folder);
  if (!names) QWLog::appendLogAndPrint("The backups in %@ cannot be read: %@", folder, names.error().text);
  return names;
}

// On the way an older extension gives way to today's, and a stray automatic backup goes to the others.
Listing listManualBackups(const std::string& location, const BackupReader& reader) {
  const auto names = toldBackupNamesIn(location);
  if (!names) return {{}, names.error()};
  Listing listing;
  for (const std::string& name : *names) {
    const std::string listed = paths::join(location, name);
    const auto date = folderDate(listed);
    if (!date) continue;
    const std::string path = withCurrentExtension(listed);
    if (isAutomaticName(name)) {
      moveToAutosaves(path);
    } else {
      listing.backups.push_back(reader.read(path, date));
    }
  }
  return listing;
}

Listing listAutoBackups(const BackupReader& reader) {
  Listing listing;
  const auto folder = QWDataController::autosaveLocation();
  if (!folder) return listing;
  const auto names = toldBackupNamesIn(*folder);
  if (!names) return {{}, names.error()};
  for (const std::string& name : *names) {
    const std::string path = paths::join(*folder, name);
    if (const auto date = folderDate(path)) listing.backups.push_back(reader.read(path, date));
  }
  return listing;
}

}  // namespace

void QWDataController::tellObservers() {
  NotificationCenter::shared().postOnMainThread("QWVantoryBackupsRefresh");
}

std::string QWDataController::uniqueBackupName(const std::string& name) {
  const std::string library = vantoryBackupLocation().value_or("");
  if (library.empty()) return name;
  std::string candidate = name;
  for (int count = 2; QWFileManager::itemExistsAtPath(paths::join(library, backupFileName(candidate))); ++count)
    candidate = formatted("%@-%i", name, count);
  return candidate;
}

// The main thread may be showing the lists, so it replaces them.
void QWDataController::populateBackups() {
  QWLog::appendLog("Populating backups...");
  const auto location = vantoryBackupLocation();
  if (const auto path = unusableLibraryFolder())
    QWLog::appendLog("The setting backupPath is no whole path: %@. The backups are in %@", *path, location);
  Listing manual = location ? listManualBackups(*location, BackupReader()) : Listing();
  noteListing(libraryError_, std::move(manual.error));
  populateAutoBackups(false);

  Library library = {QWAutosaveHeader::autosaveHeaderWithChildren(autoBackupArray())};
  library.insert(library.end(), manual.backups.begin(), manual.backups.end());
  MainThread::shared().runAndWait([&] { setBackupArray(std::move(library)); });
  tellObservers();
  QWLog::appendLog("Backup population complete");
}

void QWDataController::measureBackups() const {
  const BackupList backups = allBackups();
  forEachInParallel(backups.size(), [&](std::size_t index) { (void)backups[index]->size(); });
}

bool QWDataController::areBackupsMeasured() const {
  return std::ranges::all_of(allBackups(), [](const auto& backup) { return backup->isMeasured(); });
}

void QWDataController::populateAutoBackups(bool reload) {
  QWLog::appendLog("Populating auto backups...");
  Listing listing = listAutoBackups(BackupReader());
  noteListing(autosaveError_, std::move(listing.error));
  MainThread::shared().runAndWait([&] { setAutoBackupArray(std::move(listing.backups)); });
  if (reload) tellObservers();
  QWLog::appendLog("Auto backup population complete");
}

std::shared_ptr<QWBackup> QWDataController::defaultBackup() const {
  BackupList backups = allBackups();
  std::stable_partition(backups.begin(), backups.end(), [](const auto& backup) { return !backup->isAutosave(); });
  const auto found = std::ranges::find_if(backups, [](const auto& backup) { return backup->isDefault(); });
  return found == backups.end() ? nullptr : *found;
}

}  // namespace vantory
