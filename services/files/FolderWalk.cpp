// Walks folders without going in circles.
#include "services/files/FolderWalk.h"

#include <map>

#include "base/Paths.h"
#include "services/Runtime.h"

namespace vantory {

namespace {

// One walk, with what it has counted and where links have led it.
class Walk {
 public:
  Walk(Detail detail, Links links, const FileVisitor& visit, Unreadable unreadable)
      : detail_(detail), links_(links), visit_(visit), unreadable_(unreadable) {}

  // A folder that the walk is inside of, and the one around it.
  struct Level {
    const std::string& folder;
    const Level* above;
  };

  // False when the visitor, or a folder that cannot be read, has ended the walk.
  bool enter(const Level& level) {
    const auto entries = files_.list(level.folder, detail_);
    if (!entries) return unreadable_ == Unreadable::PassOver;
    for (const DirectoryEntry& entry : *entries) {
      const std::string path = paths::join(level.folder, entry.name);
      if (entry.type == FileType::Folder) {
        if (!enter({path, &level})) return false;
      } else if (const auto target = linkedFolder(path, entry)) {
        if (!enterByLink({path, &level}, *target)) return false;
      } else if (visit_ && !visit_(path, entry)) {
        return false;
      } else {
        size_ += entry.size;
      }
    }
    return true;
  }

  std::uint64_t size() const { return size_; }

 private:
  // Each folder once, whatever links lead to it: links that double at every level would never come to an end.
  bool enterByLink(const Level& level, const FileIdentity& folder) {
    if (isInside(*level.above, folder)) return true;
    if (const auto known = linkedSizes_.find(folder); known != linkedSizes_.end()) {
      size_ += known->second;
      return true;
    }
    const std::uint64_t before = size_;
    const bool goesOn = enter(level);
    linkedSizes_.emplace(folder, size_ - before);
    return goesOn;
  }

  // The folder that a link stands for, where links are followed; none for all else.
  std::optional<FileIdentity> linkedFolder(const std::string& path, const DirectoryEntry& entry) const {
    if (links_ == Links::DoNotFollow || entry.type != FileType::SymbolicLink) return std::nullopt;
    const auto info = files_.info(path, Links::Follow);
    if (!info || info->type != FileType::Folder) return std::nullopt;
    return info->identity;
  }

  // Asks the disk only here: trees without links to folders need no identities.
  bool isInside(const Level& innermost, const FileIdentity& folder) const {
    for (const Level* level = &innermost; level; level = level->above) {
      const auto info = files_.info(level->folder, Links::Follow);
      if (info && info->identity == folder) return true;
    }
    return false;
  }

  const FileSystem& files_ = Runtime::current().platform().files;
  const Detail detail_;
  const Links links_;
  const FileVisitor& visit_;
  const Unreadable unreadable_;
  std::uint64_t size_ = 0;
  // Of the folders entered through a link; a second link to one adds its size without another visit.
  std::map<FileIdentity, std::uint64_t> linkedSizes_;
};

}  // namespace

bool walkFolder(const std::string& folder, Detail detail, Links links, const FileVisitor& visit,
                Unreadable unreadable) {
  return Walk(detail, links, visit, unreadable).enter({folder, nullptr});
}

std::uint64_t folderSize(const std::string& folder, Links links) {
  const FileVisitor nobody;
  Walk walk(Detail::Sizes, links, nobody, Unreadable::PassOver);
  walk.enter({folder, nullptr});
  return walk.size();
}

bool isHousekeepingEntry(const std::string&, const DirectoryEntry& entry) {
  return entry.name == ".DS_Store" || entry.name == "Icon\r";
}

}  // namespace vantory
