// The library's place: the user's choice, or below the folder of application data.
#include "backups/LibraryFolder.h"

#include "backups/BackupNaming.h"
#include "base/Format.h"
#include "base/Paths.h"
#include "platform/FileSystem.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"
#include "services/files/QWFileManager.h"
#include "services/settings/QWUserDefaults.h"
#include "services/settings/SettingsKeys.h"

namespace vantory {

std::optional<std::string> libraryFolder() {
  const auto path = QWUserDefaults::standardUserDefaults().stringForKey(setting::kBackupPath);
  auto folder = path ? folderNamed(*path) : std::nullopt;
  return folder ? folder : usualLibraryFolder();
}

// A relative path would depend on where the program was started.
std::optional<std::string> folderNamed(const std::string& path) {
  if (path.starts_with('/')) return std::string(paths::withoutTrailingSlashes(path));
  const auto home = QWLocalPaths::userDirectory();
  if (!home || (path != "~" && !path.starts_with("~/"))) return std::nullopt;
  return paths::join(*home, path.substr(1));
}

std::optional<std::string> unusableLibraryFolder() {
  auto path = QWUserDefaults::standardUserDefaults().stringForKey(setting::kBackupPath);
  return path && !path->empty() && !folderNamed(*path) ? path : std::nullopt;
}

std::optional<std::string> usualLibraryFolder() {
  const auto support = QWLocalPaths::appSupportDirectory(true);
  if (!support) return std::nullopt;
  return paths::join(*support, "Quarrywell/Vantory/Backups");
}

std::vector<std::string> foldersOfBackups() {
  std::vector<std::string> folders;
  for (auto folder : {libraryFolder(), usualLibraryFolder()})
    if (folder) folders.push_back(std::move(*folder));
  return folders;
}

std::optional<std::string> missingLibraryInWords() {
  const auto library = libraryFolder();
  if (!library || !QWFileManager::isMissingAtPath(*library)) return std::nullopt;
  return formatted("The library of backups, %@, is not there.", *library);
}

std::optional<std::string> autosavesFolder() {
  const auto library = libraryFolder();
  if (!library) return std::nullopt;
  return paths::join(*library, kAutosavesFolder);
}

Result<std::vector<std::string>> backupNamesIn(const std::string& folder) {
  const auto entries = Runtime::current().platform().files.list(folder, Detail::Names);
  if (!entries && !meansMissing(entries.error())) return entries.error();
  std::vector<std::string> names;
  if (!entries) return names;
  for (const DirectoryEntry& entry : *entries)
    if (isBackupName(entry.name)) names.push_back(entry.name);
  return names;
}

std::vector<std::string> pathsOfBackups() {
  std::vector<std::string> backups;
  for (const auto& folder : {libraryFolder(), autosavesFolder()}) {
    const auto names = folder ? backupNamesIn(*folder) : std::vector<std::string>();
    if (!names) continue;
    for (const std::string& name : *names) backups.push_back(paths::join(*folder, name));
  }
  return backups;
}

}  // namespace vantory
