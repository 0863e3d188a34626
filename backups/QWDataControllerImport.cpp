// How a backup from elsewhere gets into the library and is restored.
#include "backups/BackupNaming.h"
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

// A relative path begins where the program was started.
std::string absolutePath(const std::string& path) {
  return path.starts_with('/') ? std::string(paths::withoutTrailingSlashes(path))
                               : paths::join(QWCmdUtils::applicationPath(), path);
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
  const auto cleared = clearBackupPath(target);
  if (!cleared) return cleared.error();
  if (!cleared->empty()) {
    QWLog::appendLog("What was %@ is in the Trash now: %@", target, *cleared);
    report.done(FileAction::Trash, target, {}, *cleared);
  }
  Status named = copy ? (*copy)->commit(StagedCopy::Existing::Keep) : Status(copy.error());
  if (!named && !copy) named = QWFileManager::copyFile(source, target, 10s);
  return named ? files().sync(target) : named;
}

}  // namespace

bool QWDataController::addBackupFromFile(const std::string& path, TaskReport& report) {
  QWLog::appendLog("Adding backup file %@", path);
  std::string backup = absolutePath(path);
  const auto refuse = [&](const char* logLine, Error cause) {
    QWLog::appendLog(logLine);
    report.failed(FileAction::Restore, backup, std::move(cause));
    return false;
  };
  if (paths::extension(backup) == kOlderBackupExtension) backup = withBackupExtension(backup);
  const std::string library = vantoryBackupLocation().value_or("");
  const auto info = files().info(backup, Links::Follow);
  const bool isNoFolder = info && info->type != FileType::Folder;
  if (library.empty() || !isBackupName(backup) || isNoFolder)
    return refuse("Unable to locate backup", {std::errc::invalid_argument, backup + " is no backup."});

  if (!paths::isWithin(backup, library)) {
    const std::string target = paths::join(library, paths::lastComponent(backup));
    // It may lie in the library and be reached by another way.
    if (!QWFileManager::isSameItem(backup, target)) {
      const Status copied = copyToLibrary(backup, target, report);
      report.add(FileAction::Copy, backup, copied, {}, target);
      if (!copied) {
        QWLog::appendLog("%@", copied.error().text);
        QWLog::appendLog("Unable to copy file %@ to %@", backup, target);
        return false;
      }
    }
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
