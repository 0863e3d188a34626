#include "services/files/FolderWalk.h"

#include <set>

#include "base/Paths.h"
#include "services/Runtime.h"

namespace vantory {

namespace {

class Walk {
 public:
  Walk(Detail detail, Links links, const FileVisitor& visit, Unreadable unreadable)
      : detail_(detail), links_(links), visit_(visit), unreadable_(unreadable) {}

  // A folder that the walk is inside of, and the one around it.
  struct Level {
    const std::string& folder;
    const Level* above;
  };

  bool enter(const Level& level) {
    const auto entries = files_.list(level.folder, detail_);
    if (!entries) return unreadable_ == Unreadable::PassOver;
    for (const DirectoryEntry& entry : *entries) {
      const std::string path = paths::join(level.folder, entry.name);
      if (entry.type == FileType::Folder) {
        if (!enter({path, &level})) return false;
      } else if (const auto target = linkedFolder(path, entry)) {
        if (isInside(level, *target) || !enteredByLink_.insert(*target).second) continue;
        if (!enter({path, &level})) return false;
      } else if (!visit_(path, entry)) {
        return false;
      }
    }
    return true;
  }

 private:
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
  std::set<FileIdentity> enteredByLink_;
};

}  // namespace

bool walkFolder(const std::string& folder, Detail detail, Links links, const FileVisitor& visit,
                Unreadable unreadable) {
  return Walk(detail, links, visit, unreadable).enter({folder, nullptr});
}

bool isHousekeepingEntry(const std::string&, const DirectoryEntry& entry) {
  return entry.name == ".DS_Store" || entry.name == "Icon\r";
}

}  // namespace vantory
