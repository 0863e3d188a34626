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

enum class CopyState { Sound, Damaged, Unknown };

// Of a file at a whole path, which has to lie in the folder.
CopyState stateOfFile(const FolderChecksums& backup, const std::string& folder, const std::string& path) {
  if (!path.starts_with(folder + "/")) return CopyState::Unknown;
  const auto checksum = backup.ofFile(path.substr(folder.size() + 1));
  if (!checksum) return CopyState::Unknown;
  return checksum->isDamaged() ? CopyState::Damaged : CopyState::Sound;
}

// A damaged file decides, whatever else cannot be read.
CopyState stateOf(const std::string& backup, const std::string& path) {
  const auto checksums = platform().checksums.ofFolder(backup);
  if (!checksums) return CopyState::Unknown;
  const auto info = platform().files.info(path, Links::DoNotFollow);
  if (!info || info->type != FileType::Folder) return stateOfFile(**checksums, backup, path);
  const HeldFiles held = listHeldFiles(path);
  CopyState all = held.unreadable.empty() ? CopyState::Sound : CopyState::Unknown;
  for (const HeldFile& file : held.files) {
    if (file.type != FileType::File) continue;
    const CopyState state = stateOfFile(**checksums, backup, paths::join(path, file.path));
    if (state == CopyState::Damaged) return state;
    if (state == CopyState::Unknown) all = state;
  }
  return all;
}

}  // namespace

bool isDamagedCopy(const std::string& backup, const std::string& path) {
  return stateOf(backup, path) == CopyState::Damaged;
}

std::optional<std::string> olderBackupWithSoundCopy(const std::string& backup, const std::string& path) {
  const auto date = dateOf(backup);
  if (!date || !paths::isWithin(path, backup)) return std::nullopt;
  for (const DatedBackup& older : backupsBefore(*date))
    if (stateOf(older.path, older.path + path.substr(backup.size())) == CopyState::Sound) return older.path;
  return std::nullopt;
}

}  // namespace vantory
