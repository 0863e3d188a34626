#include "platform/FileMetadata.h"
#include "services/FolderWalk.h"
#include "services/QWAuthorization.h"
#include "services/QWFileManager.h"
#include "services/QWLog.h"
#include "services/Runtime.h"

namespace vantory {

namespace {

// Sets or clears the flag of one item after another. Once administrator rights were refused they are not asked for
// again.
class LockChange {
 public:
  explicit LockChange(bool locked) : locked_(locked) {}

  bool apply(const std::string& path) {
    const auto info = platform_.files.info(path, Links::DoNotFollow);
    if (!info) return QWFileManager::meansMissing(info.error()) || report(info.error());
    if (info->locked == locked_) return true;
    const Status changed = platform_.metadata.setLocked(path, locked_);
    if (changed || (rightsCouldHelp(changed.error()) && applyWithRights(path))) return true;
    return report(changed.error());
  }

 private:
  bool report(const Error& error) const {
    QWLog::appendLog(locked_ ? "Unable to lock %@" : "Unable to unlock %@", error.text);
    return false;
  }

  bool applyWithRights(const std::string& path) {
    QWAuthorization& authorization = QWAuthorization::sharedController();
    if (refused_ || !authorization.canAuthorize()) return false;
    const int status = authorization.authExecTask("/usr/bin/chattr", {locked_ ? "+i" : "-i", path});
    refused_ = status == QWAuthorization::NotAuthorized;
    return status == QWAuthorization::Success;
  }

  const Platform& platform_ = Runtime::current().platform();
  const bool locked_;
  bool refused_ = false;
};

void changeFolder(const std::string& folder, bool locked) {
  const auto info = Runtime::current().platform().files.info(folder, Links::DoNotFollow);
  if (!info || info->type != FileType::Folder) return;
  LockChange change(locked);
  walkFolder(folder, Detail::Names, Links::DoNotFollow, [&](const std::string& path, const DirectoryEntry&) {
    change.apply(path);
    return true;
  });
}

}  // namespace

bool QWFileManager::lockFile(const std::string& path) {
  return LockChange(true).apply(path);
}

bool QWFileManager::unlockFile(const std::string& path) {
  return LockChange(false).apply(path);
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
