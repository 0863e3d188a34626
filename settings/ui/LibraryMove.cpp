#include "settings/ui/LibraryMove.h"

#include <algorithm>
#include <chrono>
#include <vector>

#include "backups/BackupNaming.h"
#include "backups/LibraryHold.h"
#include "base/Paths.h"
#include "platform/FileSystem.h"
#include "services/Runtime.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"

namespace vantory {

namespace {

using namespace std::chrono_literals;

FileSystem& files() {
  return Runtime::current().platform().files;
}

std::vector<std::string> backupNamesIn(const std::string& folder, LibraryRemainder& left) {
  std::vector<std::string> names;
  const auto entries = files().list(folder, Detail::Names);
  if (!entries && !QWFileManager::meansMissing(entries.error())) {
    QWLog::appendLog("Unable to read the backups: %@", entries.error().text);
    left.mayBeMore = true;
  }
  if (!entries) return names;
  for (const DirectoryEntry& entry : *entries)
    if (isBackupName(entry.name)) names.push_back(entry.name);
  return names;
}

// Never from under another process that writes it.
bool moveBackup(const std::string& backup, const std::string& destination) {
  const auto hold = holdBackupFolder(backup);
  if (hold || hold.error().code != std::errc::timed_out) return QWFileManager::moveFile(backup, destination, 10s);
  QWLog::appendLog("Another process is working on %@: %@", backup, hold.error().text);
  return false;
}

}  // namespace

LibraryRemainder moveLibrary(const std::string& from, const std::string& to) {
  // Listed first: the new folder may lie in the old one.
  LibraryRemainder left;
  const std::string automatic = paths::join(from, kAutosavesFolder);
  const std::vector<std::string> names = backupNamesIn(from, left);
  const std::vector<std::string> automaticNames = backupNamesIn(automatic, left);
  left.backups = names.size() + automaticNames.size();
  // Where there is no folder the first backup would take its place.
  if (!QWFileManager::isDirectoryAtPath(to)) return left;
  for (const std::string& name : names)
    if (moveBackup(paths::join(from, name), to)) --left.backups;
  const std::string newAutomatic = paths::join(to, kAutosavesFolder);
  if (!automaticNames.empty() && !QWFileManager::fileExistsAtPath(newAutomatic))
    QWFileManager::createDirectory(newAutomatic);
  for (const std::string& name : automaticNames)
    if (moveBackup(paths::join(automatic, name), paths::join(newAutomatic, name))) --left.backups;
  // The setting that names the new folder is on the disk already.
  if (const Status synced = files().sync(to); !synced)
    QWLog::appendLog("The moved backups may not be on disk yet: %@", synced.error().text);
  return left;
}

bool mayHoldBackups(const std::string& folder) {
  if (!QWFileManager::isFolderEmpty(folder)) return true;
  LibraryRemainder there;
  backupNamesIn(folder, there);
  backupNamesIn(paths::join(folder, kAutosavesFolder), there);
  return there.mayBeMore;
}

std::string reasonAgainstLibrary(const std::string& folder) {
  if (!folder.starts_with('/')) return "Please enter the whole path of a folder, beginning with \"/\".";
  if (QWFileManager::isWildcardPath(folder)) return "The path of the backup folder cannot contain a \"*\".";
  const std::vector<std::string_view> components = paths::components(folder);
  if (std::any_of(components.begin(), components.end(), isBackupName))
    return "That folder is a backup, or lies in one.";
  if (QWFileManager::itemExistsAtPath(folder) && !QWFileManager::isDirectoryAtPath(folder))
    return "That is a file, not a folder.";
  return "";
}

}  // namespace vantory
