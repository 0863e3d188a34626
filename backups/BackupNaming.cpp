// How backups are called on disk.
#include "backups/BackupNaming.h"

#include <algorithm>

#include "base/Paths.h"
#include "base/Text.h"

namespace vantory {

std::string backupFileName(std::string_view name) {
  return std::string(name).append(".").append(kBackupExtension);
}

std::string backupName(std::string_view path) {
  return paths::withoutExtension(paths::lastComponent(path));
}

std::string withBackupExtension(std::string_view path) {
  return backupFileName(paths::withoutExtension(path));
}

bool isBackupName(std::string_view path) {
  return std::ranges::count(kBackupExtensions, lowerCased(paths::extension(path))) > 0;
}

bool isAutomaticName(std::string_view name) {
  return name.starts_with(kAutomaticPrefix);
}

bool isOfDotsOnly(std::string_view name) {
  return name.find_first_not_of(". ") == std::string_view::npos;
}

}  // namespace vantory
