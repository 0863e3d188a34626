// Lists a backup's folder, and sums up its paths.
#include "backups/HeldFiles.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "backups/BackupNaming.h"
#include "base/Checksum.h"
#include "base/Paths.h"
#include "platform/Checksums.h"
#include "services/Runtime.h"
#include "services/log/QWLog.h"

namespace vantory {

namespace {

// As "find" prints it.
char letterOf(FileType type) {
  switch (type) {
    case FileType::File:
      return 'f';
    case FileType::Folder:
      return 'd';
    case FileType::SymbolicLink:
      return 'l';
    case FileType::Other:
      break;
  }
  return 'o';
}

}  // namespace

// Paths that grow too long end the way down.
HeldFiles listHeldFiles(const std::string& backup) {
  const FileSystem& disk = Runtime::current().platform().files;
  HeldFiles held;
  std::vector<std::string> folders = {""};
  while (!folders.empty()) {
    const std::string folder = std::move(folders.back());
    folders.pop_back();
    auto entries = disk.list(folder.empty() ? backup : paths::join(backup, folder), Detail::Names);
    if (!entries) {
      held.unreadable.push_back(entries.error());
      continue;
    }
    for (const DirectoryEntry& entry : *entries) {
      std::string path = folder.empty() ? entry.name : paths::join(folder, entry.name);
      if (entry.type == FileType::Folder)
        folders.push_back(std::move(path));
      else if (path != kBackupSettingsFile)
        held.files.push_back({std::move(path), entry.type});
    }
  }
  return held;
}

// Sorted by their bytes. A path may hold anything but a zero byte.
std::string HeldFiles::note() const {
  std::vector<std::pair<char, std::string_view>> records;
  records.reserve(files.size());
  for (const HeldFile& file : files) records.emplace_back(letterOf(file.type), file.path);
  std::ranges::sort(records);
  Checksum checksum;
  std::string record;
  for (const auto& [letter, path] : records) {
    record.assign(1, letter).append(1, ' ').append(path).append(1, '\0');
    checksum.add(record);
  }
  return std::to_string(files.size()) + " " + checksum.text();
}

bool holdsOtherFiles(const std::string& backup) {
  const auto noted = Runtime::current().platform().checksums.held(paths::join(backup, kBackupSettingsFile));
  return noted && *noted && **noted != listHeldFiles(backup).note();
}

bool takeNoteOfHeldFiles(const std::string& backup) {
  Checksums& checksums = Runtime::current().platform().checksums;
  const std::string settings = paths::join(backup, kBackupSettingsFile);
  const auto noted = checksums.held(settings);
  if (!noted) return false;
  if (!*noted) return true;
  const HeldFiles held = listHeldFiles(backup);
  return held.unreadable.empty() && **noted == held.note() && checksums.setHeld(settings, std::nullopt);
}

void noteHeldFiles(const std::string& backup) {
  const HeldFiles held = listHeldFiles(backup);
  Status noted = held.unreadable.empty() ? Status() : Status(held.unreadable.front());
  if (noted)
    noted = Runtime::current().platform().checksums.setHeld(paths::join(backup, kBackupSettingsFile), held.note());
  if (!noted) QWLog::appendLog("The backup carries no note of what it holds: %@", noted.error().text);
}

}  // namespace vantory
