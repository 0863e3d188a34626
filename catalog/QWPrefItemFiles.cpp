// How an item's files are trashed, locked and measured.
#include <algorithm>
#include <chrono>
#include <set>

#include "base/Format.h"
#include "base/Paths.h"
#include "catalog/BackupPlace.h"
#include "catalog/QWPrefItem.h"
#include "platform/FileSystem.h"
#include "services/Runtime.h"
#include "services/TaskReport.h"
#include "services/files/QWFileManager.h"
#include "services/files/RealPaths.h"
#include "services/log/QWLog.h"

namespace vantory {

namespace {

constexpr std::chrono::seconds kTimeout{10};

// Finds the files that mark another as being in use.
class Companions {
 public:
  // Of a folder that is listed as a whole anyway, one more look tells the companions of all its files.
  explicit Companions(bool listFolders) : listFolders_(listFolders) {}

  // The companion's path, none when it does not exist.
  std::optional<std::string> of(const std::string& path) {
    std::string companion = path + kSuffix;
    if (listFolders_ && !mayExist(companion)) return std::nullopt;
    if (!QWFileManager::itemExistsAtPath(companion)) return std::nullopt;
    return companion;
  }

 private:
  static constexpr const char* kSuffix = ".lockfile";

  bool mayExist(const std::string& companion) {
    std::string folder = paths::parent(companion);
    if (folder != folder_) list(std::move(folder));
    return !listed_ || names_.contains(paths::lastComponent(companion));
  }

  void list(std::string folder) {
    const auto entries = Runtime::current().platform().files.list(folder, Detail::Names);
    listed_ = entries.ok();
    names_.clear();
    folder_ = std::move(folder);
    if (!listed_) return;
    for (const DirectoryEntry& entry : *entries)
      if (entry.name.ends_with(kSuffix)) names_.insert(entry.name);
  }

  const bool listFolders_;
  std::string folder_;
  bool listed_ = false;  // else every name may exist
  std::set<std::string> names_;
};

// Moves the files of one item to the Trash.
class ItemTrashing {
 public:
  ItemTrashing(const std::string& item, TaskReport& report) : item_(item), report_(report) {}

  // Called first for what a pattern matches, all of it at once.
  void plan(const std::vector<std::string>& paths) { report_.planned(FileAction::Trash, paths, item_); }
  // The file, and its companion. A path that is not known to exist is looked for first.
  void trash(const std::string& path, bool exists, Companions& companions) {
    // A pattern may match a file and its companion.
    if (companions_.contains(path)) return;
    // What cannot even be looked at is tried too, so that its failure is told.
    if (exists || !QWFileManager::isMissingAtPath(path)) {
      if (!exists) plan({path});
      QWLog::appendLog("Trashing file %@", path);
      move(path);
    }
    if (const auto companion = companions.of(path)) {
      plan({*companion});
      move(*companion);
      companions_.insert(*companion);
    }
  }
  int count() const { return count_; }

 private:
  // Only what has arrived in the Trash is counted. With no place there another task was sooner.
  void move(const std::string& path) {
    const auto place = QWFileManager::trashFile(path, kTimeout, report_);
    if (!place) return report_.failed(FileAction::Trash, path, place.error(), item_);
    if (place->empty()) return;
    report_.done(FileAction::Trash, path, item_, *place);
    ++count_;
  }

  const std::string& item_;  // its key
  TaskReport& report_;
  std::set<std::string> companions_;  // those that have had their turn
  int count_ = 0;
};

// Called just before the failure of a file, if any, is logged.
void tellLocking(const std::string& path) {
  QWLog::appendLog("Locking file %@", path);
}

void tellUnlocking(const std::string& path) {
  QWLog::appendLog("Unlocking file %@", path);
}

// Nothing at all is mixed.
State stateOf(const LockCount& count) {
  if (count.locked == 0 && count.unlocked > 0) return Off;
  return count.locked > 0 && count.unlocked == 0 ? On : Mixed;
}

// A pattern without a match counts as one file that is not locked.
LockCount countLocks(const QWPrefItem& item) {
  LockCount count;
  for (const std::string& pattern : item.files()) {
    const std::vector<std::string> matches = item.matches(pattern);
    if (matches.empty()) count.add(false);
    for (const std::string& path : matches) count.add(QWFileManager::isFileLocked(path));
  }
  return count;
}

// The item's own attributes; none when it does not exist or is a link to nothing.
std::optional<FileInfo> attributesOf(const std::string& path) {
  const Result<FileInfo> info = Runtime::current().platform().files.info(path, Links::DoNotFollow);
  if (!info) return std::nullopt;
  if (info->type == FileType::SymbolicLink && !QWFileManager::fileExistsAtPath(path)) return std::nullopt;
  return *info;
}

}  // namespace

std::vector<std::string> QWPrefItem::matches(const std::string& pattern, TaskReport* report,
                                             const BackupPlace* backup) const {
  const std::string root(backup ? paths::withoutTrailingSlashes(backup->path()) : "");
  std::vector<std::string> found;
  if (backup) {
    const std::string written = backup->safeUserPath(pattern);
    found = report ? QWFileManager::filesMatchingWildcardPath(written, root, *report)
                   : QWFileManager::filesMatchingWildcardPath(written, root);
  } else {
    found = report ? QWFileManager::filesMatchingWildcardPath(pattern, *report)
                   : QWFileManager::filesMatchingWildcardPath(pattern);
  }
  // By its own rule a restore tells more.
  if (!definition_->matchRule || (backup && placeRule_)) return found;
  RealPaths realPaths;
  std::erase_if(found, [&](const std::string& path) {
    const auto live = backup ? livePathOf(path, root) : path;
    const std::string fault = live ? faultOfMatch(*live, path, realPaths) : "";
    if (!fault.empty() && report && !QWFileManager::isMissingAtPath(path)) {
      QWLog::appendLog("%@ %@ and was left out.", path, fault);
      report->skipped(FileAction::List, path,
                      {std::errc::operation_not_permitted, formatted("%@ %@ and was left out.", path, fault),
                       "Where a preference is called so, give it another name."},
                      key());
    }
    return !fault.empty();
  });
  return found;
}

int QWPrefItem::trash(TaskReport& report) {
  ItemTrashing trashing(key(), report);
  for (const std::string& pattern : files()) {
    Companions companions(QWFileManager::isWildcardPath(paths::lastComponent(pattern)));
    const std::vector<std::string> paths = matches(pattern, &report);
    const bool exist = QWFileManager::isWildcardPath(pattern);
    if (exist) trashing.plan(paths);
    for (const std::string& path : paths) trashing.trash(path, exist, companions);
  }
  int count = trashing.count();
  for (const auto& user : users_)
    if (user->selected() == On) count += user->trash(report);
  locked_ = Off;
  return count;
}

void QWPrefItem::lockFiles(State state, TaskReport& report, bool refreshParent) {
  if (!lockable()) return;
  const FileAction action = state == On ? FileAction::Lock : FileAction::Unlock;
  for (const std::string& pattern : files()) {
    const std::vector<std::string> found = matches(pattern, &report);
    report.planned(action, found, key());
    const auto outcomes =
        state == On ? QWFileManager::lockFiles(found, tellLocking) : QWFileManager::unlockFiles(found, tellUnlocking);
    // A file that is missing is no part of the report.
    for (std::size_t i = 0; i < found.size(); ++i) {
      if (!outcomes[i].status && QWFileManager::isSymbolicLinkAtPath(found[i])) {
        Error cause = QWFileManager::linkLeftOut(found[i]);
        QWLog::appendLog("%@", cause.text);
        report.skipped(action, found[i], std::move(cause), key());
      } else if (outcomes[i].changed || !outcomes[i].status) {
        report.add(action, found[i], outcomes[i].status, key());
      }
      if (outcomes[i].wasSo)
        report.skipped(action, found[i], {{}, found[i] + (state == On ? " is locked already" : " is not locked")},
                       key());
    }
  }
  for (const auto& user : users_) user->lockFiles(state, report, false);
  updateLockStatus();
  if (!refreshParent) return;
  if (const auto holder = parent()) holder->updateLockStatus(false);
}

void QWPrefItem::updateLockStatus(bool refreshUsers) {
  if (refreshUsers)
    for (const auto& user : users_) user->updateLockStatus();
  locked_.becomeDue();
}

LockCount QWPrefItem::locksOfExistingFiles() const {
  LockCount count;
  if (!lockable()) return count;
  for (const std::string& pattern : files())
    for (const std::string& path : matches(pattern))
      if (!QWFileManager::isMissingAtPath(path)) count.add(QWFileManager::isFileLocked(path));
  for (const auto& user : users_) count.add(user->locksOfExistingFiles());
  return count;
}

State QWPrefItem::lockStateOfFiles() const {
  if (!lockable()) return Off;
  LockCount count = countLocks(*this);
  // Users count only where the item has no files of its own.
  if (files().empty())
    for (const auto& user : users_) count.add(user->locked() != Off);
  return stateOf(count);
}

void QWPrefItem::populateFileDatesAndSizes(const BackupPlace& backup) {
  measuredWhenAsked_ = nullptr;
  std::optional<Timestamp> newest;
  std::uint64_t total = 0;
  for (const std::string& pattern : files())
    for (const std::string& path : matches(pattern, nullptr, &backup)) {
      const std::optional<FileInfo> info = attributesOf(path);
      if (!info) continue;
      newest = std::max(newest, std::optional(info->modified));
      total += info->size;
    }
  for (const auto& user : users_) {
    user->populateFileDatesAndSizes(backup);
    newest = std::max(newest, user->date_);
    total += user->size_.value_or(0);
  }
  date_ = newest;
  size_ = total;
  isMeasured_ = true;
}

}  // namespace vantory
