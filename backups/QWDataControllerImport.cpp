// How a backup from elsewhere gets into the library and is restored.
#include "backups/BackupNaming.h"
#include "backups/DefaultBackup.h"
#include "backups/LibraryHold.h"
#include "backups/QWDataController.h"
#include "base/Paths.h"
#include "platform/FileSystem.h"
#include "services/QWCmdUtils.h"
#include "services/Runtime.h"
#include "services/TaskReport.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"

namespace vantory {

namespace {

using namespace std::chrono_literals;

FileSystem& files() {
  return Runtime::current().platform().files;
}

// A relative path begins where the program was started. One of the older extension stands for its twin of today's.
std::string backupPath(const std::string& path) {
  std::string backup = path.starts_with('/') ? std::string(paths::withoutTrailingSlashes(path))
                                             : paths::join(QWCmdUtils::applicationPath(), path);
  return paths::extension(backup) == kOlderBackupExtension ? withBackupExtension(backup) : backup;
}

// Copies a backup to its place in the library. One that bears the name already goes to the Trash, when the copy is
// ready to take its place.
Status copyToLibrary(const std::string& source, const std::string& target, TaskReport& report) {
  const std::string library = paths::parent(target);
  if (Status made = QWFileManager::createDirectory(library); !made) return made;
  auto copy = QWFileManager::stageCopy({.source = source, .destination = target});
  if (!copy && !rightsCouldHelp(copy.error())) return copy.error();

  const auto hold = holdBackupFolder(library);
  if (!hold) return hold.error();
  if (!QWFileManager::isMissingAtPath(target)) report.planned(FileAction::Trash, std::vector{target});
  const auto cleared = clearBackupPath(target);
  if (!cleared) return cleared.error();
  report.planned(FileAction::Create, std::vector{target});
  Status named = copy ? (*copy)->commit(StagedCopy::Existing::Keep) : Status(copy.error());
  if (!named && !copy) named = QWFileManager::copyFile(source, target, 10s);
  if (named || !QWFileManager::returnFile(*cleared, target, 10s, report)) noteCleared(target, *cleared, report);
  if (!named) return named;
  report.noted(FileAction::Create, target);
  return files().sync(target);
}

// Whether a backup of the name, which is that of a folder, may be there.
bool isBackup(const std::string& path) {
  const auto info = files().info(path, Links::Follow);
  return isBackupName(path) && (!info || info->type == FileType::Folder);
}

// Notes how the copying into the library went.
bool isCopied(const std::string& backup, const std::string& target, TaskReport& report) {
  const bool inheritsDefault = wouldInheritDefault(target);
  const Status copied = copyToLibrary(backup, target, report);
  report.add(FileAction::Copy, backup, copied, {}, target);
  if (copied && inheritsDefault) noteInheritedDefault(target, report);
  if (copied) return true;
  QWLog::appendLog("%@", copied.error().text);
  QWLog::appendLog("Unable to copy file %@ to %@", backup, target);
  return false;
}

}  // namespace

std::optional<std::string> QWDataController::copyBackupFromFile(const std::string& path, TaskReport& report) {
  QWLog::appendLog("Adding backup file %@ without restoring it", path);
  const std::string backup = backupPath(path);
  const std::string library = vantoryBackupLocation().value_or("");
  if (library.empty() || !isBackup(backup)) {
    report.failed(FileAction::Copy, backup, {std::errc::invalid_argument, backup + " is no backup."});
    return std::nullopt;
  }
  const std::string target = paths::join(library, backupFileName(uniqueBackupName(backupName(backup))));
  if (!isCopied(backup, target, report)) return std::nullopt;
  populateBackups();
  return target;
}

bool QWDataController::addBackupFromFile(const std::string& path, TaskReport& report) {
  QWLog::appendLog("Adding backup file %@", path);
  std::string backup = backupPath(path);
  const auto refuse = [&](const char* logLine, Error cause) {
    QWLog::appendLog(logLine);
    report.failed(FileAction::Restore, backup, std::move(cause));
    return false;
  };
  const std::string library = vantoryBackupLocation().value_or("");
  if (library.empty() || !isBackup(backup))
    return refuse("Unable to locate backup", {std::errc::invalid_argument, backup + " is no backup."});

  if (!paths::isWithin(backup, library)) {
    // As the listing would name one that ends in ".VNT2".
    const std::string target = paths::join(library, backupFileName(backupName(backup)));
    // It may lie in the library and be reached by another way.
    if (!QWFileManager::isSameItem(backup, target) && !isCopied(backup, target, report)) return false;
    backup = target;
  }
  populateBackups();
  for (const auto& node : backupArray()) {
    const auto candidate = std::dynamic_pointer_cast<QWBackup>(node);
    if (!candidate || candidate->path() != backup) continue;
    if (candidate->children().empty())
      return refuse("The backup holds nothing that can be restored",
                    {std::errc::invalid_argument, backup + " holds nothing that can be restored."});
    // Everything that the backup holds: a backup that was just read has all of it ticked.
    candidate->restore(report);
    return report.hasDone(FileAction::Restore);
  }
  return refuse("Unable to locate backup",
                {std::errc::no_such_file_or_directory, backup + " is not among the backups of the library."});
}

}  // namespace vantory
