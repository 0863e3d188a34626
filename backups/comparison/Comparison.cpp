// Goes through the items of both sides, and through their folders.
#include "backups/comparison/Comparison.h"

#include <algorithm>
#include <map>
#include <set>

#include "backups/BackupFolder.h"
#include "backups/BackupLibrary.h"
#include "backups/OlderCopy.h"
#include "backups/QWBackup.h"
#include "backups/comparison/FileContent.h"
#include "base/Format.h"
#include "base/Paths.h"
#include "catalog/FileRestoring.h"
#include "platform/FileMetadata.h"
#include "platform/FileSystem.h"
#include "services/Runtime.h"
#include "services/TaskReport.h"
#include "services/files/QWFileManager.h"
#include "services/files/RealPaths.h"

namespace vantory {

namespace {

constexpr int kDeepestFolder = 1000;
constexpr const char* kDamaged = "The copy is damaged: it is not what its checksum says, and a restore leaves it.";
constexpr const char* kReplacedLink = "It is a symbolic link now, which a restore replaces.";

const FileSystem& files() {
  return Runtime::current().platform().files;
}

// The present files, or a backup.
class Side {
 public:
  explicit Side(const QWBackup* backup) {
    if (backup) place_.emplace(std::string(paths::withoutTrailingSlashes(backup->path())));
  }

  bool isPresent() const { return !place_; }
  // Whether a file of the backup is not what its checksum says.
  bool isDamaged(const std::string& path) const {
    const Status sound = place_ ? checkCopy(place_->path(), path) : Status();
    return !sound && sound.error().code == std::errc::bad_message;
  }
  // Of a backup.
  std::string path() const { return place_->path(); }

  // Where that lies here which belongs at this path of the live system.
  std::string placeOf(const std::string& path) const {
    return place_ ? paths::join(place_->path(), place_->safeUserPath(path)) : path;
  }

  // Where on the live system all that belongs which matches; a path that is no pattern matches whether or not it is
  // there.
  std::vector<std::string> match(const std::string& pattern, TaskReport& unreadable) const {
    if (!place_) return QWFileManager::filesMatchingWildcardPath(pattern, unreadable);
    if (!QWFileManager::isWildcardPath(pattern)) return {pattern};
    std::vector<std::string> found;
    for (const std::string& path :
         QWFileManager::filesMatchingWildcardPath(place_->safeUserPath(pattern), place_->path(), unreadable))
      if (auto live = livePathOf(path, place_->path())) found.push_back(std::move(*live));
    return found;
  }

  // Whether a link leads there from the backup's folder: a restore refuses that, and it may lead anywhere.
  bool isBehindLink(const std::string& path) {
    const std::string folder = paths::parent(path);
    if (!place_ || folder.size() <= place_->path().size() || straight_.contains(folder)) return false;
    const auto info = files().info(folder, Links::DoNotFollow);
    if (info && info->type == FileType::SymbolicLink) return true;
    if (isBehindLink(folder)) return true;
    straight_.insert(folder);
    return false;
  }

 private:
  std::optional<BackupFolder> place_;
  std::set<std::string> straight_;  // folders without a link above them
};

// One thing as it lies on one side.
struct Found {
  std::string path;
  std::optional<FileInfo> info = {};  // none where it is missing
  bool isLink = false;                // the info is that of what a link of the person's leads to
};

class ItemComparing {
 public:
  // `held` is the item in the backup that comes after; null where it has none.
  ItemComparing(Side& before, Side& after, ItemComparison& item, const QWPrefItem* held,
                const std::function<bool()>& goOn)
      : before_(before), after_(after), item_(item), held_(held), goOn_(goOn) {}

  // False when it was ended.
  bool compare(const std::set<std::string>& patterns);

 private:
  void compare(const std::string& path);
  Status checkRestoring(const std::string& path, const Found& after);
  void compare(const std::string& path, Found before, Found after, Difference onlyBefore, int depth);
  void compareFolders(const std::string& path, const Found& before, const Found& after, Difference onlyBefore,
                      int depth);
  bool find(const std::string& path, Found& found, Side& side);
  void compareFiles(FileComparison file, const Found& before, const Found& after);
  void compareLinks(FileComparison file);
  void add(FileComparison file, Difference difference, std::string remark = {});
  void addUnreadable(const std::string& path, const std::string& why);

  Side& before_;
  Side& after_;
  ItemComparison& item_;
  const QWPrefItem* const held_;
  const std::function<bool()>& goOn_;
  RealPaths realPaths_;
  bool ended_ = false;
};

void ItemComparing::add(FileComparison file, Difference difference, std::string remark) {
  file.difference = difference;
  if (!remark.empty()) file.remark = std::move(remark);
  if (difference == Difference::Same)
    ++item_.same;
  else
    item_.files.push_back(std::move(file));
  ended_ = !goOn_();
}

void ItemComparing::addUnreadable(const std::string& path, const std::string& why) {
  add({.path = path, .before = {}, .after = {}}, Difference::Unreadable, why);
}

std::string remarkOnLink(const std::string& path) {
  const auto target = Runtime::current().platform().metadata.linkTarget(path);
  return formatted("In the backup it is a symbolic link to %@.", target ? *target : "an unknown place");
}

bool ItemComparing::compare(const std::set<std::string>& patterns) {
  TaskReport unreadable;
  std::set<std::string> matches;
  for (const std::string& pattern : patterns)
    for (const Side* side : {&before_, &after_})
      for (std::string& path : side->match(pattern, unreadable)) matches.insert(std::move(path));
  for (const FileReport& folder : unreadable.files()) addUnreadable(folder.path, folder.cause->text);
  for (const std::string& path : matches) {
    if (ended_) break;
    compare(path);
  }
  std::ranges::stable_sort(item_.files, {}, &FileComparison::path);
  return !ended_;
}

// False, with the reason told, where it cannot be looked at. A present file that is a link stands for what it leads to,
// as it does when it is backed up; a link to nothing is looked at itself.
bool ItemComparing::find(const std::string& path, Found& found, Side& side) {
  if (side.isBehindLink(found.path)) {
    addUnreadable(path, found.path + ": a symbolic link leads there, which a restore does not follow");
    return false;
  }
  auto info = files().info(found.path, Links::DoNotFollow);
  if (info && info->type == FileType::SymbolicLink && side.isPresent()) {
    found.isLink = true;
    if (auto target = files().info(found.path, Links::Follow)) info = std::move(target);
  }
  if (info)
    found.info = *info;
  else if (!meansMissing(info.error()))
    addUnreadable(path, info.error().text);
  return info || meansMissing(info.error());
}

// Between two backups nothing is restored.
Status ItemComparing::checkRestoring(const std::string& path, const Found& after) {
  if (!before_.isPresent() || !after.info || !held_) return {};
  if (const std::string fault = held_->placeRule() ? "" : held_->faultOfMatch(path, after.path, realPaths_);
      !fault.empty())
    return Error{std::errc::operation_not_permitted, path + " " + fault};
  return vantory::checkRestoring(after.path, path, after_.path(), held_->placeRule());
}

// What the item's own pattern stands for, be it a file or a folder.
void ItemComparing::compare(const std::string& path) {
  Found before{before_.placeOf(path)};
  Found after{after_.placeOf(path)};
  if (!find(path, before, before_) || !find(path, after, after_)) return;
  if (const Status restored = checkRestoring(path, after); !restored)
    return add({path, before.path, after.path}, Difference::Refused, restored.error().text + '.');
  const Difference onlyBefore = before_.isPresent() ? Difference::Kept : Difference::Removed;
  if (before.isLink && after.info && before.info->type == FileType::Folder)
    add({path, before.path, after.path}, Difference::Different, kReplacedLink);
  compare(path, std::move(before), std::move(after), onlyBefore, 0);
}

void ItemComparing::compare(const std::string& path, Found before, Found after, Difference onlyBefore, int depth) {
  const auto is = [](const Found& found, FileType type) { return found.info && found.info->type == type; };
  if (ended_ || (!before.info && !after.info)) return;
  const bool isFolderBefore = is(before, FileType::Folder);
  const bool isFolderAfter = is(after, FileType::Folder);
  if (before.info && after.info && isFolderBefore && isFolderAfter)
    return compareFolders(path, before, after, Difference::Removed, depth);
  if ((isFolderBefore && !after.info) || (isFolderAfter && !before.info))
    return compareFolders(path, before, after, onlyBefore, depth);
  FileComparison file{path, before.path, after.path};
  if (is(after, FileType::Other))
    return add(std::move(file), Difference::Unreadable, after.path + ": no file, folder or link");
  if (!after.info) return add(std::move(file), onlyBefore);
  if (is(after, FileType::SymbolicLink)) file.remark = remarkOnLink(after.path);
  if (!before.info) return add(std::move(file), Difference::Added);
  if (before.info->type != after.info->type) {
    if (file.remark.empty()) file.remark = "It is of another kind, such as a folder instead of a file.";
    return add(std::move(file), Difference::Different);
  }
  if (is(before, FileType::SymbolicLink)) return compareLinks(std::move(file));
  compareFiles(std::move(file), before, after);
}

void ItemComparing::compareFiles(FileComparison file, const Found& before, const Found& after) {
  const bool haveSameSize = before.info->size == after.info->size;
  file.difference = Difference::Same;
  if (!haveSameSize || before.info->modified != after.info->modified) compareContent(file, haveSameSize);
  // Only of what differs: to find out, all of it is read.
  if (file.difference == Difference::Different && after_.isDamaged(file.after)) file.remark = kDamaged;
  const bool isOnlyLink = before.isLink && file.difference == Difference::Same;
  const Difference difference = isOnlyLink ? Difference::Different : file.difference;
  const bool isToldAsLink = before.isLink && file.remark != kDamaged;
  add(std::move(file), difference, isToldAsLink ? kReplacedLink : "");
}

void ItemComparing::compareLinks(FileComparison file) {
  const FileMetadata& metadata = Runtime::current().platform().metadata;
  const auto before = metadata.linkTarget(file.before);
  const auto after = metadata.linkTarget(file.after);
  if (!before || !after) return add(std::move(file), Difference::Unreadable, (before ? after : before).error().text);
  if (*before == *after) return add(std::move(file), Difference::Same);
  add(std::move(file), Difference::Different, "It leads to " + *after + " instead of " + *before + ".");
}

// Of a folder that one side lacks, each file is on the other side only.
void ItemComparing::compareFolders(const std::string& path, const Found& before, const Found& after,
                                   Difference onlyBefore, int depth) {
  if (depth == kDeepestFolder) return addUnreadable(path, path + ": the folders are too deep inside each other");
  std::set<std::string> names;
  for (const Found* side : {&before, &after}) {
    if (!side->info) continue;
    const auto entries = files().list(side->path, Detail::Names);
    if (!entries) return addUnreadable(path, entries.error().text);
    for (const DirectoryEntry& entry : *entries) names.insert(entry.name);
  }
  for (const std::string& name : names) {
    if (ended_) return;
    Found sides[] = {{paths::join(before.path, name)}, {paths::join(after.path, name)}};
    const bool isThere[] = {before.info.has_value(), after.info.has_value()};
    std::optional<Error> failure;
    for (std::size_t i = 0; i < 2; ++i) {
      if (!isThere[i]) continue;
      const auto info = files().info(sides[i].path, Links::DoNotFollow);
      if (info)
        sides[i].info = *info;
      else if (!meansMissing(info.error()))
        failure = info.error();
    }
    const std::string below = paths::join(path, name);
    if (failure)
      addUnreadable(below, failure->text);
    else
      compare(below, std::move(sides[0]), std::move(sides[1]), onlyBefore, depth + 1);
  }
}

// The item of that key in a backup; null when it holds none.
std::shared_ptr<QWPrefItem> itemIn(const QWBackup* backup, const std::string& key) {
  return backup ? prefItemForKey(backup->children(), key) : nullptr;
}

// The patterns of an item and of its users, who may be others on the other side.
void addPatterns(std::set<std::string>& patterns, const QWPrefItem* item) {
  if (!item) return;
  patterns.insert(item->files().begin(), item->files().end());
  for (const auto& user : item->users()) addPatterns(patterns, user.get());
}

// Those of the catalog, and those that a backup alone knows, by its own definitions.
AppList appsOf(const ComparisonRequest& request) {
  AppList apps = BackupLibrary::current().appArray();
  for (const auto& backup : {request.after, request.before})
    if (backup) apps.insert(apps.end(), backup->children().begin(), backup->children().end());
  return apps;
}

}  // namespace

const char* nameOf(Difference difference) {
  switch (difference) {
    case Difference::Same:
      return "same";
    case Difference::Different:
      return "different";
    case Difference::Added:
      return "added";
    case Difference::Kept:
      return "kept";
    case Difference::Removed:
      return "removed";
    case Difference::Refused:
      return "refused";
    case Difference::Unreadable:
      break;
  }
  return "unreadable";
}

std::size_t Comparison::count(Difference difference) const {
  std::size_t count = 0;
  for (const ItemComparison& item : items)
    count += difference == Difference::Same
                 ? item.same
                 : static_cast<std::size_t>(std::ranges::count(item.files, difference, &FileComparison::difference));
  return count;
}

// Of the present files only those of items that the backup holds: a restore looks at no others.
Comparison compareBackups(const ComparisonRequest& request) {
  Side before(request.before.get());
  Side after(request.after.get());
  Comparison comparison;
  std::size_t compared = 0;
  const std::function<bool()> goOn = [&] { return !request.observer || request.observer(++compared); };
  std::set<std::string> keys;
  for (const auto& app : appsOf(request))
    for (const auto& item : app->children()) {
      if (request.items && std::ranges::count(*request.items, item->key()) == 0) continue;
      if (!keys.insert(item->key()).second) continue;
      const auto held = itemIn(request.after.get(), item->key());
      const auto earlier = itemIn(request.before.get(), item->key());
      if (!held && !earlier) continue;
      std::set<std::string> patterns;
      addPatterns(patterns, held.get());
      addPatterns(patterns, request.before ? earlier.get() : item.get());
      comparison.items.push_back({.application = app->name(), .name = item->name(), .key = item->key(), .files = {}});
      comparison.isWhole = ItemComparing(before, after, comparison.items.back(), held.get(), goOn).compare(patterns);
      if (!comparison.isWhole) return comparison;
    }
  return comparison;
}

}  // namespace vantory
