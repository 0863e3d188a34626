#include "settings/ui/LibraryMove.h"

#include <algorithm>
#include <chrono>
#include <vector>

#include "backups/LibraryHold.h"
#include "services/Paths.h"
#include "services/QWFileManager.h"
#include "services/QWLog.h"
#include "services/Text.h"

namespace vantory {

namespace {

using namespace std::chrono_literals;

bool isBackupName(const std::string& name) {
  const std::string lower = lowerCased(name);
  return lower.ends_with(".vnt") || lower.ends_with(".vnt2");
}

std::vector<std::string> backupNamesIn(const std::string& folder) {
  std::vector<std::string> names = QWFileManager::contentsOfDirectory(folder);
  std::erase_if(names, [](const std::string& name) { return !isBackupName(name); });
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

std::size_t moveLibrary(const std::string& from, const std::string& to) {
  // Listed first: the new folder may lie in the old one.
  const std::string automatic = paths::join(from, "Autosaves");
  const std::vector<std::string> names = backupNamesIn(from);
  const std::vector<std::string> automaticNames = backupNamesIn(automatic);
  // Where there is no folder the first backup would take its place.
  if (!QWFileManager::isDirectoryAtPath(to)) return names.size() + automaticNames.size();
  std::size_t left = 0;
  for (const std::string& name : names)
    if (!moveBackup(paths::join(from, name), to)) ++left;
  if (automaticNames.empty()) return left;
  const std::string newAutomatic = paths::join(to, "Autosaves");
  if (!QWFileManager::fileExistsAtPath(newAutomatic)) QWFileManager::createDirectory(newAutomatic);
  for (const std::string& name : automaticNames)
    if (!moveBackup(paths::join(automatic, name), paths::join(newAutomatic, name))) ++left;
  return left;
}

std::string reasonAgainstLibrary(const std::string& folder) {
  if (!folder.starts_with('/')) return "Please enter the whole path of a folder, beginning with \"/\".";
  if (folder.find('*') != std::string::npos) return "The path of the backup folder cannot contain a \"*\".";
  const std::vector<std::string> components = paths::components(folder);
  if (std::any_of(components.begin(), components.end(), isBackupName))
    return "That folder is a backup, or lies in one.";
  if (QWFileManager::itemExistsAtPath(folder) && !QWFileManager::isDirectoryAtPath(folder))
    return "That is a file, not a folder.";
  return "";
}

}  // namespace vantory
