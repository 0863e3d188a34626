#include "backups/BackupNaming.h"
#include "backups/LibraryHold.h"
#include "backups/QWDataController.h"
#include "base/Paths.h"
#include "platform/FileSystem.h"
#include "services/QWCmdUtils.h"
#include "services/Runtime.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"

namespace vantory {

namespace {

using namespace std::chrono_literals;

FileSystem& files() {
  return Runtime::current().platform().files;
}

std::string absolutePath(const std::string& path) {
  return path.starts_with('/') ? paths::join(path, "") : paths::join(QWCmdUtils::applicationPath(), path);
}

// Copies a backup to its place in the library. One that bears the name already goes to the Trash, when the copy is
// ready to take its place.
Status copyToLibrary(const std::string& source, const std::string& target) {
  const std::string library = paths::parent(target);
  if (!QWFileManager::createDirectory(library)) return Error{std::errc::io_error, library + " could not be made"};
  auto copy = QWFileManager::stageCopy({.source = source, .destination = target});
  if (!copy && !rightsCouldHelp(copy.error())) return copy.error();

  const auto hold = holdBackupFolder(library);
  if (!hold) return hold.error();
  if (!clearBackupPath(target)) return Error{std::errc::file_exists, target + " is in the way"};
  const Status named = copy ? (*copy)->commit(StagedCopy::Existing::Keep) : Status(copy.error());
  if (!named && (copy || !QWFileManager::copyFile(source, target, 10s))) return named;
  return files().sync(target);
}

}  // namespace

bool QWDataController::addBackupFromFile(const std::string& path) {
  QWLog::appendLog("Adding backup file %@", path);
  std::string backup = absolutePath(path);
  if (paths::extension(backup) == kOlderBackupExtension) backup = withBackupExtension(backup);
  const std::string library = vantoryBackupLocation().value_or("");
  const auto info = files().info(backup, Links::Follow);
  const bool isNoFolder = info && info->type != FileType::Folder;
  if (library.empty() || !isBackupName(backup) || isNoFolder) {
    QWLog::appendLog("Unable to locate backup");
    return false;
  }

  if (!paths::isWithin(backup, library)) {
    const std::string target = paths::join(library, paths::lastComponent(backup));
    // It may lie in the library and be reached by another way.
    if (!QWFileManager::isSameItem(backup, target)) {
      if (const Status copied = copyToLibrary(backup, target); !copied) {
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
    if (candidate->children().empty()) {
      QWLog::appendLog("The backup holds nothing that can be restored");
      return false;
    }
    candidate->restore();
    return true;
  }
  QWLog::appendLog("Unable to locate backup");
  return false;
}

}  // namespace vantory
