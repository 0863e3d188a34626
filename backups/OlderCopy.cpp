// Looks through the library, from the damaged backup's date backwards.
#include "backups/OlderCopy.h"

#include <algorithm>
#include <vector>

#include "backups/BackupNaming.h"
#include "backups/HeldFiles.h"
#include "backups/LibraryFolder.h"
#include "base/Paths.h"
#include "base/Timestamp.h"
#include "platform/Checksums.h"
#include "platform/FileSystem.h"
#include "services/Runtime.h"
#include "services/files/QWFileManager.h"

namespace vantory {

namespace {

struct DatedBackup {
  std::string path;
  Timestamp date;
};

Platform& platform() {
  return Runtime::current().platform();
}

std::optional<Timestamp> dateOf(const std::string& backup) {
  const auto info = platform().files.info(backup, Links::Follow);
  return info ? std::optional(info->modified) : std::nullopt;
}

// The newest first.
std::vector<DatedBackup> backupsBefore(Timestamp date) {
  std::vector<DatedBackup> backups;
  for (const std::string& path : pathsOfBackups()) {
    if (QWFileManager::isMissingAtPath(paths::join(path, kBackupSettingsFile))) continue;
    if (const auto modified = dateOf(path); modified && *modified < date) backups.push_back({path, *modified});
  }
  std::ranges::sort(backups, [](const auto& left, const auto& right) { return right.date < left.date; });
  return backups;
}

// Of a file at a whole path, which has to lie in the folder.
Status checkFile(const FolderChecksums& backup, const std::string& folder, const std::string& path) {
  if (path == folder || !paths::isWithin(path, folder))
    return Error{std::errc::invalid_argument, path + ": it does not lie in " + folder};
  const auto checksum = backup.ofFile(path.substr(folder.size() + 1));
  if (!checksum) return checksum.error();
  if (checksum->isDamaged()) return damagedCopy(path);
  return {};
}

}  // namespace

// A damaged file decides, whatever else cannot be read.
Status checkCopy(const std::string& backup, const std::string& path) {
  const auto checksums = platform().checksums.ofFolder(backup);
  if (!checksums) return checksums.error();
  const auto info = platform().files.info(path, Links::DoNotFollow);
  if (!info || info->type != FileType::Folder) return checkFile(**checksums, backup, path);
  const HeldFiles held = listHeldFiles(path);
  Status all = held.unreadable.empty() ? Status() : held.unreadable.front();
  for (const HeldFile& file : held.files) {
    if (file.type != FileType::File) continue;
    const Status checked = checkFile(**checksums, backup, paths::join(path, file.path));
    if (checked) continue;
    if (checked.error().code == std::errc::bad_message) return checked;
    all = checked;
  }
  return all;
}

std::optional<std::string> olderBackupWithSoundCopy(const std::string& backup, const std::string& path) {
  const auto date = dateOf(backup);
  if (!date || !paths::isWithin(path, backup)) return std::nullopt;
  for (const DatedBackup& older : backupsBefore(*date))
    if (checkCopy(older.path, older.path + path.substr(backup.size()))) return older.path;
  return std::nullopt;
}

}  // namespace vantory
