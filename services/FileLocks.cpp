#include "platform/FileMetadata.h"
#include "services/FolderWalk.h"
#include "services/QWAuthorization.h"
#include "services/QWFileManager.h"
#include "services/QWLog.h"
#include "services/Runtime.h"

namespace vantory {

namespace {

bool report(const Error& error, bool locked) {
  QWLog::appendLog(locked ? "Unable to lock %@" : "Unable to unlock %@", error.text);
  return false;
}

bool changeWithRights(const std::string& path, bool locked) {
  QWAuthorization& authorization = QWAuthorization::sharedController();
  return authorization.canAuthorize() &&
         authorization.authExecTask("/usr/bin/chattr", {locked ? "+i" : "-i", path}) == QWAuthorization::Success;
}

bool change(const std::string& path, bool locked) {
  const Status changed = Runtime::current().platform().metadata.setLocked(path, locked);
  if (changed || QWFileManager::meansMissing(changed.error())) return true;
  if (rightsCouldHelp(changed.error()) && changeWithRights(path, locked)) return true;
  return report(changed.error(), locked);
}

// Looks first: nearly everything is unlocked, and a file that is need not even be ours to open.
bool unlock(const std::string& path) {
  const auto info = Runtime::current().platform().files.info(path, Links::DoNotFollow);
  if (!info) return QWFileManager::meansMissing(info.error()) || report(info.error(), false);
  return !info->locked || change(path, false);
}

void changeFolder(const std::string& folder, bool locked) {
  const auto info = Runtime::current().platform().files.info(folder, Links::DoNotFollow);
  if (!info || info->type != FileType::Folder) return;
  walkFolder(folder, Detail::Names, Links::DoNotFollow, [&](const std::string& path, const DirectoryEntry&) {
    if (locked)
      change(path, true);
    else
      unlock(path);
    return true;
  });
}

}  // namespace

bool QWFileManager::lockFile(const std::string& path) {
  return change(path, true);
}

bool QWFileManager::unlockFile(const std::string& path) {
  return unlock(path);
}

bool QWFileManager::isFileLocked(const std::string& path) {
  const auto info = Runtime::current().platform().files.info(path, Links::DoNotFollow);
  return info && info->locked;
}

void QWFileManager::lockFolder(const std::string& path) {
  changeFolder(path, true);
}

void QWFileManager::unlockFolder(const std::string& path) {
  changeFolder(path, false);
}

}  // namespace vantory
