// Goes through the files of each item, and of its copies.
#include "backups/Survey.h"

#include <algorithm>
#include <cstdlib>
#include <set>
#include <string_view>
#include <utility>

#include "backups/BackupFolder.h"
#include "backups/QWDataController.h"
#include "base/Paths.h"
#include "platform/FileSystem.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"
#include "services/files/FolderWalk.h"

namespace vantory {

namespace {

using Kept = Standing::Kept;

// One file of an item.
struct Found {
  std::string place;  // where a backup has it, below its folder
  std::uint64_t size = 0;
  Timestamp modified = {};
  bool isKept = true;  // false for a link that a backup leaves out
};

// File systems of other kinds round a copy's date to two seconds.
bool isSameFile(const Found& live, const Found& copy) {
  if (live.place != copy.place || live.size != copy.size) return false;
  if (live.modified == copy.modified) return true;
  return copy.modified.nanoseconds == 0 && std::abs(live.modified.seconds - copy.modified.seconds) <= 2;
}

// Finds the files of one item, on disk or in a backup. Nothing more once the survey is stale.
class Finder {
 public:
  explicit Finder(const std::function<bool()>& isStale) : isStale_(isStale) {}

  // `placeOf` tells where a backup has a path.
  template <class PlaceOf>
  void add(const std::vector<std::string>& found, PlaceOf placeOf) {
    for (const std::string& path : found) {
      const auto info = files_.info(path, Links::DoNotFollow);
      if (!info || info->type == FileType::Other) continue;
      const std::string place = placeOf(path, info->type);
      if (info->type == FileType::Folder) addFolder(path, place);
      if (info->type == FileType::File) found_.push_back({place, info->size, info->modified});
      if (info->type == FileType::SymbolicLink) found_.push_back({.place = place, .isKept = false});
    }
  }

  // In the order of their places, each once.
  std::vector<Found> take() {
    std::ranges::sort(found_, {}, &Found::place);
    const auto isSamePlace = [](const Found& one, const Found& other) { return one.place == other.place; };
    found_.erase(std::unique(found_.begin(), found_.end(), isSamePlace), found_.end());
    return std::move(found_);
  }

 private:
  void addFolder(const std::string& folder, const std::string& place) {
    walkFolder(folder, Detail::Names, Links::DoNotFollow, [&](const std::string& path, const DirectoryEntry& entry) {
      if (isStale_()) return false;
      Found file = {.place = place + path.substr(folder.size())};
      // Of a link a backup has a copy, whose date may be another.
      if (entry.type == FileType::Other) return true;
      if (entry.type == FileType::File) {
        const auto info = files_.info(path, Links::DoNotFollow);
        if (!info) return true;
        file.size = info->size;
        file.modified = info->modified;
      }
      found_.push_back(std::move(file));
      return true;
    });
  }

  const FileSystem& files_ = Runtime::current().platform().files;
  const std::function<bool()>& isStale_;
  std::vector<Found> found_;
};

std::vector<Found> liveFiles(const QWPrefItem& item, const BackupFolder& anyBackup,
                             const std::function<bool()>& isStale) {
  Finder finder(isStale);
  for (const std::string& pattern : item.files())
    finder.add(item.matches(pattern),
               [&](const std::string& path, FileType type) { return anyBackup.placeOf(path, type); });
  return finder.take();
}

std::vector<Found> copiesIn(const std::string& backup, const QWPrefItem& item, const std::function<bool()>& isStale) {
  Finder finder(isStale);
  const BackupFolder place(backup);
  for (const std::string& pattern : item.files())
    finder.add(item.matches(pattern, nullptr, &place),
               [&](const std::string& path, FileType) { return path.substr(std::min(backup.size(), path.size())); });
  return finder.take();
}

// `files` are the item's own, without those of its users. `backup` is empty for none.
Standing standingOf(std::vector<Found> files, const QWPrefItem& item, const std::string& backup,
                    const std::function<bool()>& isStale) {
  Standing standing;
  standing.files = files.size();
  for (const Found& file : files) {
    standing.bytes += file.size;
    if (file.isKept) standing.changed = std::max(standing.changed, std::optional(file.modified));
  }
  std::erase_if(files, [](const Found& file) { return !file.isKept; });
  if (backup.empty()) {
    standing.kept = files.empty() ? Kept::Nothing : Kept::NotAtAll;
    return standing;
  }
  const std::vector<Found> copies = copiesIn(backup, item, isStale);
  if (files.empty() && copies.empty()) return standing;
  standing.kept = std::ranges::equal(files, copies, isSameFile) ? Kept::AsItIs : Kept::Otherwise;
  return standing;
}

// Two that differ are neither of both, unless one of them is nothing.
Kept together(Kept one, Kept other) {
  if (one == other || other == Kept::Nothing) return one;
  if (one == Kept::Nothing) return other;
  return one == Kept::Otherwise || other == Kept::Otherwise ? Kept::Otherwise : Kept::InPart;
}

}  // namespace

void Standing::add(const Standing& other) {
  files += other.files;
  bytes += other.bytes;
  changed = std::max(changed, other.changed);
  kept = together(kept, other.kept);
}

Standing Survey::of(const std::vector<const QWPrefItem*>& items) const {
  Standing sum;
  std::set<std::string_view> seen;
  const auto add = [&](const QWPrefItem& item) {
    const auto part = parts_.find(item.key());
    if (part == parts_.end()) return;
    sum.add(part->second.standing);
    for (const SharedFile& file : part->second.shared) {
      if (seen.insert(file.place).second) continue;
      --sum.files;
      sum.bytes -= file.bytes;
    }
  };
  for (const QWPrefItem* item : items) {
    add(*item);
    for (const auto& user : item->users()) add(*user);
  }
  return sum;
}

Standing Survey::of(const QWPrefItem& item) const {
  return of(std::vector{&item});
}

Standing Survey::of(const QWApp& app) const {
  std::vector<const QWPrefItem*> items;
  for (const auto& item : app.children()) items.push_back(item.get());
  return of(items);
}

Standing Survey::ofPreferences(const QWApp& app) const {
  std::vector<const QWPrefItem*> items;
  for (const auto& item : app.children())
    if (item->isPreferences()) items.push_back(item.get());
  return of(items);
}

// A backup that was torn off is none to compare with.
SurveyRequest SurveyRequest::forEverything() {
  const QWDataController& data = QWDataController::sharedController();
  SurveyRequest request;
  request.apps_ = data.appArray();
  BackupList backups = data.allBackups();
  std::erase_if(backups, [](const auto& backup) { return !backup->isComplete(); });
  std::ranges::stable_sort(backups, [](const auto& left, const auto& right) { return left->date() > right->date(); });
  for (const auto& backup : backups)
    for (const auto& app : backup->children())
      for (const auto& item : app->children()) {
        request.backups_.try_emplace(item->key(), backup->path());
        for (const auto& user : item->users()) request.backups_.try_emplace(user->key(), backup->path());
      }
  return request;
}

std::shared_ptr<const Survey> SurveyRequest::carryOut(const std::function<bool()>& isStale) const {
  const auto survey = std::make_shared<Survey>();
  const BackupFolder anyBackup("");
  std::vector<const QWPrefItem*> items;
  std::unordered_map<std::string, Survey::Part*> owners;  // the first to have a place
  const auto look = [&](const QWPrefItem& item) {
    const auto backup = backups_.find(item.key());
    const std::vector<Found> files = liveFiles(item, anyBackup, isStale);
    Survey::Part& part = survey->parts_[item.key()];
    part.standing = standingOf(files, item, backup == backups_.end() ? "" : backup->second, isStale);
    for (const Found& file : files) {
      const auto [owner, isFirst] = owners.try_emplace(file.place, &part);
      if (isFirst) continue;
      part.shared.push_back({file.place, file.size});
      // Once is enough, however many others there are.
      if (auto* first = std::exchange(owner->second, nullptr)) first->shared.push_back({file.place, file.size});
    }
  };
  for (const auto& app : apps_)
    for (const auto& item : app->children()) {
      if (isStale()) return nullptr;
      look(*item);
      for (const auto& user : item->users()) look(*user);
      items.push_back(item.get());
    }
  survey->total_ = survey->of(items);
  return isStale() ? nullptr : survey;
}

// Below the home a folder's name says what it is for; elsewhere it takes two.
std::vector<std::string> foldersLookedAt(const AppList& apps) {
  const std::string home = QWLocalPaths::userDirectory().value_or("");
  std::vector<std::string> folders;
  const auto note = [&](const std::string& pattern) {
    const bool isInHome = !home.empty() && paths::isWithin(pattern, home);
    std::size_t end = pattern.find('/', isInHome ? home.size() + 1 : 1);
    if (!isInHome && end != std::string::npos) end = pattern.find('/', end + 1);
    std::string folder = pattern.substr(0, end);
    if (std::ranges::count(folders, folder) == 0) folders.push_back(std::move(folder));
  };
  for (const auto& app : apps)
    for (const auto& item : app->children()) {
      for (const std::string& pattern : item->files()) note(pattern);
      if (const auto shared = QWLocalPaths::sharedUsersDirectory(); shared && item->hasAvidUsers())
        folders.push_back(*shared + "/AvidMediaComposer");
    }
  return folders;
}

}  // namespace vantory
