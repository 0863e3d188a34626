// How a backup of the library is renamed, and how it is removed.
#include <chrono>

#include "backups/BackupNaming.h"
#include "backups/DefaultBackup.h"
#include "backups/LibraryHold.h"
#include "backups/QWDataController.h"
#include "base/Format.h"
#include "base/Paths.h"
#include "services/TaskReport.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"
#include "services/threads/MainThread.h"

namespace vantory {

namespace {

using namespace std::chrono_literals;

// An automatic backup takes no name that is in use among the manual ones either. On a disk that takes no heed of case
// the backup itself bears its own name in other letters.
std::string freeNameFor(const QWBackup& backup, const std::string& wanted) {
  const std::string folder = paths::parent(backup.path());
  const auto isTaken = [&](const std::string& name) {
    const std::string path = paths::join(folder, backupFileName(name));
    if (QWFileManager::isSameItem(backup.path(), path)) return false;
    return QWDataController::uniqueBackupName(name) != name || QWFileManager::itemExistsAtPath(path);
  };
  std::string name = wanted;
  for (int number = 2; isTaken(name); ++number) name = formatted("%@-%i", wanted, number);
  return name;
}

// Held until the result goes, so that no other process writes there meanwhile: the backup's folder, and the library's,
// which is held while a new backup is made.
struct Holds {
  std::unique_ptr<FolderHold> library;
  std::unique_ptr<FolderHold> backup;
};

// Fails (timed_out) where another process is at work. What cannot be held for another reason nobody writes into.
Result<Holds> holdBackup(const std::string& path) {
  Holds holds;
  auto library = holdBackupFolder(paths::parent(path));
  auto backup = holdBackupFolder(path);
  for (const auto* hold : {&library, &backup})
    if (!*hold && hold->error().code == std::errc::timed_out) return hold->error();
  if (library) holds.library = std::move(*library);
  if (backup) holds.backup = std::move(*backup);
  return holds;
}

Result<std::string> trashUnlessHeld(const std::string& path, TaskReport& report) {
  const auto holds = holdBackup(path);
  if (!holds) return holds.error();
  report.planned(FileAction::Trash, std::vector{path});
  return QWFileManager::trashFile(path, 10s, report);
}

}  // namespace

// Off the list even where the Trash refused it: the next listing shows it again.
Result<std::string> QWDataController::removeBackup(const std::shared_ptr<QWBackup>& backup, TaskReport& report) {
  QWLog::appendLog("Removing backup...");
  auto place = trashUnlessHeld(backup->path(), report);
  report.add(FileAction::Trash, backup->path(), place.status(), {}, place ? *place : "");
  MainThread::shared().runAndWait([&] {
    Library library = backupArray();
    std::erase(library, std::static_pointer_cast<BackupNode>(backup));
    setBackupArray(std::move(library));
    BackupList automatic = autoBackupArray();
    if (std::erase(automatic, backup) > 0) setAutoBackupArray(std::move(automatic));
  });
  return place;
}

Result<std::string> QWDataController::renameBackup(const QWBackup& backup, const std::string& name,
                                                   TaskReport& report) {
  const auto holds = holdBackup(backup.path());
  std::string path = paths::join(paths::parent(backup.path()), backupFileName(freeNameFor(backup, name)));
  const bool inheritsDefault = wouldInheritDefault(path);
  if (holds) report.planned(FileAction::Move, {{.path = backup.path(), .place = path}});
  const Status moved = holds ? QWFileManager::moveFile(backup.path(), path, 20s) : holds.status();
  report.add(FileAction::Move, backup.path(), moved, {}, path);
  if (!moved) return moved.error();
  if (inheritsDefault) noteInheritedDefault(path, report);
  return path;
}

}  // namespace vantory
