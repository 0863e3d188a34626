// Sets and clears the immutable flag, many files at a time.
#include <string>
#include <vector>

#include "platform/FileMetadata.h"
#include "services/Runtime.h"
#include "services/files/FolderWalk.h"
#include "services/files/QWAuthorization.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"

namespace vantory {

namespace {

using Outcome = QWFileManager::LockOutcome;

// The one line that a failure gets.
Status report(const Error& error, bool locked) {
  QWLog::appendLog(locked ? "Unable to lock %@" : "Unable to unlock %@", error.text);
  return error;
}

// Where nobody can be asked for the right it is not tried.
bool changeWithRights(const std::string& path, bool locked) {
  QWAuthorization& authorization = QWAuthorization::sharedController();
  return authorization.canAuthorize() &&
         authorization.authExecTask("/usr/bin/chattr", {locked ? "+i" : "-i", path}) == QWAuthorization::Success;
}

// An item whose flag is to change.
struct Item {
  std::string path;
  bool differs = true;  // as far as is known
  Status looked = {};
  Status changed = {};
};

// Looks first: a file that is as wanted need not even be ours to open, and is not counted.
Item itemAt(const std::string& path, bool locked) {
  const auto info = Runtime::current().platform().files.info(path, Links::DoNotFollow);
  if (info) return {path, info->locked != locked};
  return locked ? Item{path} : Item{path, false, info.error()};
}

// All in one call, because another program may do the work; what is as wanted already is left out.
void changeThose(std::vector<Item>& items, bool locked) {
  std::vector<std::string> paths;
  for (const Item& item : items)
    if (item.differs) paths.push_back(item.path);
  if (paths.empty()) return;
  auto results = Runtime::current().platform().metadata.setAllLocked(paths, locked);
  auto next = results.begin();
  for (Item& item : items)
    if (item.differs) item.changed = std::move(*next++);
}

// Makes the item as wanted, if need be with more rights.
Outcome settle(const Item& item, bool locked) {
  const Status& tried = item.looked ? item.changed : item.looked;
  if (tried) return {.status = {}, .changed = item.differs, .wasSo = !item.differs};
  if (meansMissing(tried.error())) return {};
  if (item.looked && rightsCouldHelp(tried.error()) && changeWithRights(item.path, locked))
    return {.status = {}, .changed = true};
  return {.status = report(tried.error(), locked)};
}

void sayNothing(const std::string&) {}

// Some at a time: each has its cost where another program does it, yet the log should be close behind what is done.
std::vector<Outcome> changeAll(const std::vector<std::string>& paths, bool locked,
                               const QWFileManager::Announcement& announce = sayNothing) {
  constexpr std::size_t kAtOnce = 100;
  std::vector<Outcome> results;
  results.reserve(paths.size());
  for (auto next = paths.begin(); next != paths.end();) {
    std::vector<Item> items;
    for (; next != paths.end() && items.size() < kAtOnce; ++next) items.push_back(itemAt(*next, locked));
    changeThose(items, locked);
    for (const Item& item : items) {
      announce(item.path);
      results.push_back(settle(item, locked));
    }
  }
  return results;
}

// Nothing happens where the path is no folder, or a link to one.
void changeFolder(const std::string& folder, bool locked) {
  const auto info = Runtime::current().platform().files.info(folder, Links::DoNotFollow);
  if (!info || info->type != FileType::Folder) return;
  std::vector<std::string> paths;
  walkFolder(folder, Detail::Names, Links::DoNotFollow, [&](const std::string& path, const DirectoryEntry& entry) {
    // A link has no such flag, and what it leads to is not in this folder.
    if (entry.type != FileType::SymbolicLink) paths.push_back(path);
    return true;
  });
  changeAll(paths, locked);
}

}  // namespace

Status QWFileManager::lockFile(const std::string& path) {
  return changeAll({path}, true).front().status;
}

Status QWFileManager::unlockFile(const std::string& path) {
  return changeAll({path}, false).front().status;
}

std::vector<QWFileManager::LockOutcome> QWFileManager::lockFiles(const std::vector<std::string>& paths,
                                                                 const Announcement& announce) {
  return changeAll(paths, true, announce);
}

std::vector<QWFileManager::LockOutcome> QWFileManager::unlockFiles(const std::vector<std::string>& paths,
                                                                   const Announcement& announce) {
  return changeAll(paths, false, announce);
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
