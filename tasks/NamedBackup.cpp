// Finds backups of the library by name and by path.
#include "tasks/NamedBackup.h"

#include <algorithm>

#include "backups/BackupNaming.h"
#include "base/Format.h"
#include "base/Paths.h"
#include "base/Spelling.h"
#include "platform/SystemInfo.h"
#include "services/Runtime.h"
#include "services/files/QWFileManager.h"

namespace vantory {

BackupList backupsMeant(const std::string& name, const std::string& path) {
  BackupList meant = QWDataController::sharedController().allBackups();
  if (name.find('/') == std::string::npos) {
    std::erase_if(meant, [&](const auto& backup) {
      return backup->name() != name && paths::lastComponent(backup->path()) != name;
    });
    return meant;
  }
  // The listing gives an older extension up.
  const std::string current = isBackupName(path) ? withBackupExtension(path) : path;
  for (const auto& backup : meant)
    if (backup->path() == path || backup->path() == current) return {backup};
  std::erase_if(meant, [&](const auto& backup) { return !QWFileManager::isSameItem(backup->path(), path); });
  return meant;
}

BackupList sortedBackups() {
  BackupList backups = QWDataController::sharedController().allBackups();
  std::ranges::stable_sort(backups, [](const auto& left, const auto& right) {
    if (left->isAutosave() != right->isAutosave()) return right->isAutosave();
    return left->nameCompare(*right) < 0;
  });
  return backups;
}

std::string faultOfName(const std::string& name, const BackupList& meant) {
  if (name.empty()) return "An empty name names no backup. \"vantory --list-backups\" lists them.";
  if (!meant.empty()) return formatted("%i backups are called \"%@\": give the path of one.", meant.size(), name);
  const std::string path = paths::absolute(name, Runtime::current().platform().system.workingDirectory());
  if (QWFileManager::fileExistsAtPath(path) && !QWFileManager::isDirectoryAtPath(path))
    return path + " is no backup: a backup is a folder.";
  std::vector<std::string> names;
  for (const auto& backup : QWDataController::sharedController().allBackups()) names.push_back(backup->name());
  const auto nearest = nearestWord(name, names);
  return nearest ? formatted("There is no backup \"%@\": did you mean \"%@\"?", name, *nearest)
                 : formatted("There is no backup \"%@\". \"vantory --list-backups\" lists them.", name);
}

Result<std::shared_ptr<QWBackup>> backupToRead(const std::string& operand) {
  const std::string path = paths::absolute(operand, Runtime::current().platform().system.workingDirectory());
  const BackupList meant = backupsMeant(operand, path);
  const auto fault = [](std::string sentence) { return Error{std::errc::invalid_argument, std::move(sentence)}; };
  std::shared_ptr<QWBackup> backup = meant.size() == 1 ? meant.front() : nullptr;
  if (meant.empty() && !operand.empty() && QWFileManager::isDirectoryAtPath(path))
    backup = QWBackup::backupWithFile(path);
  if (!backup) return fault(faultOfName(operand, meant));
  if (backup->readError()) return *backup->readError();
  if (!backup->isComplete())
    return fault(formatted("%@ is no complete backup: it has no readable Settings.plist.", backup->path()));
  return backup;
}

}  // namespace vantory
