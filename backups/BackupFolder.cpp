// Maps paths into a backup's folder.
#include "backups/BackupFolder.h"

#include "backups/HeldFiles.h"
#include "backups/OlderCopy.h"
#include "base/Paths.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"
#include "services/files/QWFileManager.h"

namespace vantory {

BackupFolder::BackupFolder(std::string path) : BackupFolder(std::move(path), QWLocalPaths::userDirectory()) {}

Status BackupFolder::checkCopy(const std::string& path) const {
  return vantory::checkCopy(std::string(paths::withoutTrailingSlashes(path_)), path);
}

bool BackupFolder::holdsOtherFiles() const {
  return vantory::holdsOtherFiles(std::string(paths::withoutTrailingSlashes(path_)));
}

std::optional<std::string> BackupFolder::olderWithSoundCopy(const std::string& path) const {
  return olderBackupWithSoundCopy(std::string(paths::withoutTrailingSlashes(path_)), path);
}

bool BackupFolder::isInHome(const std::string& path) const {
  return home_ && paths::isWithin(path, *home_);
}

std::string BackupFolder::safeUserPath(const std::string& path) const {
  if (!isInHome(path)) return path;
  // "/", "Users" and the user's name: a home folder of another depth is mapped wrongly unless it was named, and stays
  // so for the sake of the backups that exist.
  constexpr std::size_t kUsual = 3;
  const std::size_t ofHome = Runtime::current().isHomeNamed ? paths::components(*home_).size() : kUsual;
  const std::vector<std::string_view> components = paths::components(path);
  std::string safe = std::string(kHomePlaceholder) + "/";
  for (std::size_t i = ofHome; i < components.size(); ++i) {
    if (i > ofHome) safe += '/';
    safe += components[i];
  }
  return safe;
}

// A plain folder outside the home folder lands inside a folder of its own name.
std::string BackupFolder::placeOf(const std::string& source, FileType type) const {
  const std::string safe = safeUserPath(source);
  const bool nested = type == FileType::Folder && !isInHome(source) && !QWFileManager::isPackageAtPath(source);
  return paths::join(nested ? safe : paths::parent(safe), paths::lastComponent(source));
}

}  // namespace vantory
