// Moves backups one by one, and reports what stayed.
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

// A folder that is missing has none; one that cannot be read is told in the report.
std::vector<std::string> backupNamesIn(const std::string& folder, TaskReport& report) {
  std::vector<std::string> names;
  const auto entries = files().list(folder, Detail::Names);
  if (!entries && !meansMissing(entries.error())) {
    QWLog::appendLog("Unable to read the backups: %@", entries.error().text);
    report.failed(FileAction::List, folder, entries.error());
  }
  if (!entries) return names;
  for (const DirectoryEntry& entry : *entries)
    if (isBackupName(entry.name)) names.push_back(entry.name);
  return names;
}

// Never from under another process that writes it.
Status moveBackup(const std::string& backup, const std::string& destination, TaskReport& report) {
  const auto hold = holdBackupFolder(backup);
  if (hold || hold.error().code != std::errc::timed_out)
    return QWFileManager::moveFile(backup, destination, 10s, report);
  QWLog::appendLog("Another process is working on %@: %@", backup, hold.error().text);
  return hold.error();
}

// `folder` exists, or cannot be made.
void moveBackups(const std::string& from, const std::vector<std::string>& names, const std::string& folder,
                 TaskReport& report) {
  for (const std::string& name : names) {
    const std::string backup = paths::join(from, name);
    const std::string target = paths::join(folder, name);
    report.add(FileAction::Move, backup, moveBackup(backup, target, report), {}, target);
  }
}

}  // namespace

TaskReport moveLibrary(const std::string& from, const std::string& to) {
  // Listed first: the new folder may lie in the old one.
  TaskReport report;
  const std::string automatic = paths::join(from, kAutosavesFolder);
  const std::vector<std::string> names = backupNamesIn(from, report);
  const std::vector<std::string> automaticNames = backupNamesIn(automatic, report);
  moveBackups(from, names, to, report);
  const std::string newAutomatic = paths::join(to, kAutosavesFolder);
  // Where it cannot be made, each backup says so.
  if (!automaticNames.empty() && !QWFileManager::fileExistsAtPath(newAutomatic))
    (void)QWFileManager::createDirectory(newAutomatic);
  moveBackups(automatic, automaticNames, newAutomatic, report);
  // The setting that names the new folder is on the disk already.
  if (const Status synced = files().sync(to); !synced) {
    QWLog::appendLog("The moved backups may not be on disk yet: %@", synced.error().text);
    report.failed(FileAction::Sync, to, synced.error());
  }
  return report;
}

bool mayHoldBackups(const std::string& folder) {
  if (!QWFileManager::isFolderEmpty(folder)) return true;
  TaskReport report;
  backupNamesIn(folder, report);
  backupNamesIn(paths::join(folder, kAutosavesFolder), report);
  return report.hasFailures();
}

// Each reason is a sentence for the person.
std::string reasonAgainstLibrary(const std::string& folder) {
  if (!folder.starts_with('/')) return "Please enter the whole path of a folder, beginning with \"/\" or \"~/\".";
  if (QWFileManager::isWildcardPath(folder)) return "The path of the backup folder cannot contain a \"*\".";
  const std::vector<std::string_view> components = paths::components(folder);
  if (std::any_of(components.begin(), components.end(), isBackupName))
    return "That folder is a backup, or lies in one.";
  if (QWFileManager::itemExistsAtPath(folder) && !QWFileManager::isDirectoryAtPath(folder))
    return "That is a file, not a folder.";
  return "";
}

}  // namespace vantory
