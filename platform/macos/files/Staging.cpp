// Makes hidden items, tells those of others from leftovers, and gives them their names.
#include "platform/macos/files/Staging.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <string_view>

#include "base/Paths.h"
#include "platform/StagingName.h"
#include "platform/posix/files/Errors.h"
#include "platform/posix/files/OpenFiles.h"

namespace vantory::macos {

namespace {

using darwin::AtEnd;
using darwin::ItemStatus;

// How often a name may be taken from under us before we give up.
constexpr int kAttempts = 16;

enum class Work { Ours, LeftBehind };

// The hidden name beside an item: with no folder open a whole path.
std::string hiddenName(const Place& place, int attempt) {
  const std::string name = stagingName(paths::lastComponent(place.name), attempt);
  return place.folder.valid() ? name : paths::join(paths::parent(place.name), name);
}

// Takes hold of an open item of unfinished work, if nobody else has it and it still bears the name. Where the volume
// knows no locks everybody has their own, and nobody can tell what was left behind.
bool takeHold(Work work, int item, const Place& place, const std::string& name) {
  ItemStatus opened, named;
  if (uninterrupted([&] { return flock(item, LOCK_EX | LOCK_NB); }) != 0 &&
      (errno == EWOULDBLOCK || work == Work::LeftBehind))
    return false;
  return darwin::statusOf(item, opened) == 0 &&
         darwin::statusAt(place.at(), name.c_str(), AtEnd::KeepLink, named) == 0 && isSameItem(opened, named);
}

// What a killed process left is not held by anybody; its locks may be those of a clone that was just made. Where others
// may write, it could be anybody's file with a second name: the superuser touches nothing but the name.
bool clearLeftover(const Place& place, const std::string& name, const std::string& path, const Rights& rights) {
  const Descriptor left(darwin::openAt(place.at(), name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK));
  ItemStatus status;
  if (!left.valid() || !takeHold(Work::LeftBehind, left.get(), place, name)) return false;
  if (!rights.isAdministrator() && darwin::statusOf(left.get(), status) == 0 && (status.flags & darwin::kLocks) != 0)
    (void)darwin::setFlags(left.get(), status.flags & ~darwin::kLocks);
  return removeItem(place.at(), name, path).ok();
}

// Held from its first moment, as far as the volume knows locks.
Descriptor makeHeld(const Place& place, const std::string& name, HiddenItem::Kind kind, const Rights& rights) {
  if (kind == HiddenItem::Kind::Folder) {
    if (uninterrupted([&] { return darwin::makeFolder(place.at(), name.c_str()); }) != 0) return {};
    return rights.openNewFolder(place.at(), name);
  }
  Descriptor held(uninterrupted([&] { return darwin::openNewHeld(place.at(), name.c_str()); }));
  if (held.valid() || !darwin::isUnsupported(errno)) return held;
  return Descriptor(darwin::openAt(place.at(), name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW, 0600));
}

// Content of our own, with the attributes of the source; changed now. A checksum would be that of the old content.
Status hold(std::string_view content, const Descriptor& source, const ItemStatus& status, int copy,
            const CopyRequest& request, const CopyReport& report) {
  if (Status written = writeAll(copy, content, request.destination); !written) return written;
  CopyReport ignored({}, CopyChecksum::Check, request.mayBeProgram, report.rights(), report.isInHome());
  if (Status kept = copyAttributes(source.get(), status, copy, request.source, ignored); !kept) return kept;
  const timespec now[2] = {{0, UTIME_NOW}, {0, UTIME_NOW}};
  if (futimens(copy, now) != 0) return systemError(request.destination);
  return {};
}

// Of the two volumes the one that is full is the copy's.
Error ofFullDisk(const Error& error, const std::string& destination) {
  const int number = static_cast<int>(error.code);
  return number == ENOSPC || number == EDQUOT ? systemError(destination, number) : error;
}

class StagedItem : public StagedCopy {
 public:
  StagedItem(HiddenItem item, Notes notes) : item_(std::move(item)), notes_(std::move(notes)) {}

  Status commit(Existing existing) override { return item_.name(existing); }
  const Notes& notes() const override { return notes_; }

 private:
  HiddenItem item_;
  Notes notes_;
};

}  // namespace

// Tries again where a leftover has the name, or where another process took the new item for one.
Result<HiddenItem> HiddenItem::create(Place place, const std::string& path, Kind kind, const Rights& rights) {
  for (int attempt = 0, number = 0; attempt < kAttempts; ++attempt) {
    const std::string name = hiddenName(place, number);
    Descriptor item = makeHeld(place, name, kind, rights);
    if (item.valid()) {
      if (!takeHold(Work::Ours, item.get(), place, name)) continue;
      HiddenItem made(std::move(place), name, std::move(item), kind, path);
      if (darwin::dropAccessList(made.get()) != 0 && !darwin::isUnsupported(errno)) return systemError(path);
      return made;
    }
    if (errno == ENOENT && kind == Kind::Folder) {
      ItemStatus folder;
      if (darwin::statusAt(AT_FDCWD, paths::parent(path).c_str(), AtEnd::FollowLink, folder) == 0) continue;
      errno = ENOENT;
    }
    if (errno != EEXIST) return systemError(path);
    if (!clearLeftover(place, name, path, rights)) ++number;
  }
  return errorWithText(std::errc::device_or_resource_busy, path, "others are writing to the same place");
}

// For a moment nobody holds the name: whoever takes it then is in the right, and the clone fails.
Result<bool> HiddenItem::becomeCloneOf(int source, const ItemStatus& status, const std::string& path,
                                       CopyReport& report) {
  ItemStatus own;
  if (darwin::statusOf(item_.get(), own) != 0) return systemError(path_);
  if (own.device != status.device || !report.mayClone(status)) return false;
  if (darwin::removeFile(place_.at(), hidden_.c_str()) != 0) return systemError(path_);
  Place hidden = twinOf(place_);
  if (place_.folder.valid() && !hidden.folder.valid()) return systemError(path_);
  hidden.name = hidden_;
  Result<Descriptor> cloned = cloneFile(source, status, hidden, path, report);
  if (!cloned) {
    hidden_.clear();
    return cloned.error();
  }
  const bool isClone = cloned->valid();
  item_ = isClone ? std::move(*cloned) : makeHeld(place_, hidden_, Kind::File, report.rights());
  if (!item_.valid() || !takeHold(Work::Ours, item_.get(), place_, hidden_)) {
    hidden_.clear();
    return errorWithText(std::errc::device_or_resource_busy, path_, "others are writing to the same place");
  }
  return isClone;
}

void HiddenItem::discard() {
  if (!item_.valid() || hidden_.empty()) return;
  (void)removeItem(place_.at(), hidden_, path_);
  hidden_.clear();
}

Status HiddenItem::name(StagedCopy::Existing existing) {
  // Closing tells of late errors. Ours stays open, because its lock guards the name.
  Descriptor twin(fcntl(item_.get(), F_DUPFD_CLOEXEC, 0));
  if (!twin.valid() || !twin.closeWritten()) return systemError(path_);
  if (existing == StagedCopy::Existing::Replace) return replace();
  if (renameKeeping(place_.at(), hidden_, place_.at(), place_.name) != 0) return systemError(path_);
  hidden_.clear();
  return {};
}

// A file takes another's place in one step. What else is there and the new item change names, then the old one is
// removed.
Status HiddenItem::replace() {
  ItemStatus old;
  const bool isThere = darwin::statusAt(place_.at(), place_.name.c_str(), AtEnd::KeepLink, old) == 0;
  if (!isThere && errno != ENOENT) return systemError(path_);
  if (!isThere || (kind_ == Kind::File && !S_ISDIR(old.mode))) {
    const int renamed = isThere ? uninterrupted([&] {
      return darwin::renameOver(place_.at(), hidden_.c_str(), place_.at(), place_.name.c_str());
    })
                                : renameKeeping(place_.at(), hidden_, place_.at(), place_.name);
    if (renamed != 0) return systemError(path_);
    hidden_.clear();
    return {};
  }
  if (darwin::exchange(place_.at(), hidden_.c_str(), place_.at(), place_.name.c_str()) != 0) {
    if (darwin::isUnsupported(errno))
      return errorWithText(std::errc::not_supported, path_, "this file system replaces no folder in one step");
    return systemError(path_);
  }
  discard();  // now the old item bears the hidden name
  return {};
}

Result<std::unique_ptr<StagedCopy>> stage(const Descriptor& source, const ItemStatus& status,
                                          const CopyRequest& request, Place destination, CopyReport& report) {
  const bool isFolder = S_ISDIR(status.mode);
  auto hidden = HiddenItem::create(std::move(destination), request.destination,
                                   isFolder ? HiddenItem::Kind::Folder : HiddenItem::Kind::File, report.rights());
  if (!hidden) return hidden.error();
  Status copied;
  if (request.content) {
    if (isFolder) return errorWithText(std::errc::invalid_argument, request.source, "is no file");
    copied = hold(*request.content, source, status, hidden->get(), request, report);
  } else if (isFolder) {
    copied = copyTree(source.get(), hidden->get(), request.source, report);
  } else {
    const Result<bool> isClone = hidden->becomeCloneOf(source.get(), status, request.source, report);
    if (!isClone) return ofFullDisk(isClone.error(), request.destination);
    if (!*isClone) copied = copyFile(source.get(), status, hidden->get(), request.source, report);
  }
  if (!copied) return ofFullDisk(copied.error(), request.destination);
  return std::unique_ptr<StagedCopy>(std::make_unique<StagedItem>(std::move(*hidden), report.takeNotes()));
}

}  // namespace vantory::macos
