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
  for (const auto& folder : {libraryFolder(), autosavesFolder()}) {
    const auto entries = folder ? platform().files.list(*folder, Detail::Names) : std::vector<DirectoryEntry>();
    if (!entries) continue;
    for (const DirectoryEntry& entry : *entries) {
      const std::string path = paths::join(*folder, entry.name);
      if (!isBackupName(path) || QWFileManager::isMissingAtPath(paths::join(path, kBackupSettingsFile))) continue;
      if (const auto modified = dateOf(path); modified && *modified < date) backups.push_back({path, *modified});
    }
  }
  std::ranges::sort(backups, [](const auto& left, const auto& right) { return right.date < left.date; });
  return backups;
}

// Of a file at a whole path.
Result<FileChecksum> checksumOf(const Result<std::unique_ptr<FolderChecksums>>& backup, const std::string& folder,
                                const std::string& path) {
  if (!backup) return backup.error();
  if (!path.starts_with(folder + "/")) return Error{std::errc::invalid_argument, path + ": does not lie in " + folder};
  return (*backup)->ofFile(path.substr(folder.size() + 1));
}

bool isSoundCopy(const std::string& backup, const std::string& path) {
  const auto checksums = platform().checksums.ofFolder(backup);
  const auto isSoundFile = [&](const std::string& file) {
    const auto checksum = checksumOf(checksums, backup, file);
    return checksum && !checksum->isDamaged();
  };
  const auto info = platform().files.info(path, Links::DoNotFollow);
  if (!info || info->type != FileType::Folder) return info && isSoundFile(path);
  const HeldFiles held = listHeldFiles(path);
  return held.unreadable.empty() && std::ranges::all_of(held.files, [&](const HeldFile& file) {
           return file.type != FileType::File || isSoundFile(paths::join(path, file.path));
         });
}

}  // namespace

bool isDamagedCopy(const std::string& backup, const std::string& path) {
  const auto checksums = platform().checksums.ofFolder(backup);
  const auto isDamaged = [&](const std::string& file) {
    const auto checksum = checksumOf(checksums, backup, file);
    return checksum && checksum->isDamaged();
  };
  const auto info = platform().files.info(path, Links::DoNotFollow);
  if (!info || info->type != FileType::Folder) return isDamaged(path);
  return std::ranges::any_of(listHeldFiles(path).files, [&](const HeldFile& file) {
    return file.type == FileType::File && isDamaged(paths::join(path, file.path));
  });
}

std::optional<std::string> olderBackupWithSoundCopy(const std::string& backup, const std::string& path) {
  const auto date = dateOf(backup);
  if (!date || !paths::isWithin(path, backup)) return std::nullopt;
  for (const DatedBackup& older : backupsBefore(*date))
    if (isSoundCopy(older.path, older.path + path.substr(backup.size()))) return older.path;
  return std::nullopt;
}

}  // namespace vantory
