// Makes hidden items, tells those of others from leftovers, and gives them their names.
#include "platform/macos/files/Staging.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <string_view>

#include "base/Paths.h"
#include "platform/posix/files/Errors.h"
#include "platform/posix/files/Names.h"

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

// What a killed process left is not held by anybody; its locks may be those of a clone that was just made.
bool clearLeftover(const Place& place, const std::string& name, const std::string& path) {
  const Descriptor left(darwin::openAt(place.at(), name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK));
  ItemStatus status;
  if (!left.valid() || !takeHold(Work::LeftBehind, left.get(), place, name)) return false;
  if (darwin::statusOf(left.get(), status) == 0 && (status.flags & darwin::kLocks) != 0)
    (void)darwin::setFlags(left.get(), status.flags & ~darwin::kLocks);
  return removeItem(place.at(), name, path).ok();
}

// Held from its first moment, as far as the volume knows locks.
Descriptor makeHeld(const Place& place, const std::string& name, HiddenItem::Kind kind) {
  if (kind == HiddenItem::Kind::Folder) {
    if (uninterrupted([&] { return darwin::makeFolder(place.at(), name.c_str()); }) != 0) return {};
    return Descriptor(darwin::openAt(place.at(), name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW));
  }
  Descriptor held(uninterrupted([&] { return darwin::openNewHeld(place.at(), name.c_str()); }));
  if (held.valid() || !darwin::isUnsupported(errno)) return held;
  return Descriptor(darwin::openAt(place.at(), name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW, 0600));
}

// Content of our own, with the attributes of the source; changed now. A checksum would be that of the old content.
Status hold(std::string_view content, const Descriptor& source, const ItemStatus& status, int copy,
            const CopyRequest& request) {
  while (!content.empty()) {
    const ssize_t count = uninterrupted([&] { return write(copy, content.data(), content.size()); });
    if (count < 0) return systemError(request.destination);
    content.remove_prefix(static_cast<std::size_t>(count));
  }
  CopyReport ignored({}, CopyChecksum::Check);
  copyAttributes(source.get(), status, copy, request.source, ignored);
  const timespec now[2] = {{0, UTIME_NOW}, {0, UTIME_NOW}};
  if (futimens(copy, now) != 0) return systemError(request.destination);
  return {};
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

// One move by copying: both folders are open.
class MoveByCopying {
 public:
  MoveByCopying(Place from, Place to, const std::string& source, const std::string& destination)
      : from_(std::move(from)), to_(std::move(to)), source_(source), destination_(destination) {}

  Result<Notes> run();

 private:
  Status copy();
  Status stageAndName();
  Status sync() const;
  Status removeOriginal();
  void putBack(const std::string& hidden) const;
  void removeCopy() const;

  const Place from_;
  const Place to_;
  const std::string& source_;
  const std::string& destination_;
  CopyReport report_;
  ItemStatus copy_;
  Notes notes_;
  bool isOriginalWhole_ = true;
};

// The original goes last, when the copy is on the medium and nothing has changed meanwhile.
Result<Notes> MoveByCopying::run() {
  if (const Status copied = copy(); !copied) return copied.error();
  Status moved = sync();
  if (moved) moved = report_.lookAgain(from_.at(), from_.name, source_);
  if (moved) moved = removeOriginal();
  if (moved) return std::move(notes_);
  if (isOriginalWhole_) {
    removeCopy();
    return moved.error();
  }
  return Error{moved.error().code, moved.error().text + ". The rest is in " + destination_ + " already"};
}

// Notes which item the copy is, in case it has to go again.
Status MoveByCopying::copy() {
  ItemStatus status;
  if (darwin::statusAt(from_.at(), from_.name.c_str(), AtEnd::KeepLink, status) != 0) return systemError(source_);
  Status copied = S_ISLNK(status.mode) ? copyLink(from_.at(), from_.name, to_, source_, report_) : stageAndName();
  if (copied && darwin::statusAt(to_.at(), to_.name.c_str(), AtEnd::KeepLink, copy_) != 0)
    return systemError(destination_);
  return copied;
}

Status MoveByCopying::stageAndName() {
  const Descriptor source = openSource(from_.at(), from_.name, Links::DoNotFollow);
  ItemStatus status;
  if (!source.valid() || darwin::statusOf(source.get(), status) != 0) return systemError(source_);
  if (!S_ISREG(status.mode) && !S_ISDIR(status.mode))
    return errorWithText(std::errc::not_supported, source_, "a special file cannot be moved to another disk");
  const auto staged = stage(source, status, {.source = source_, .destination = destination_}, report_);
  if (!staged) return staged.error();
  notes_ = (*staged)->notes();
  return (*staged)->commit(StagedCopy::Existing::Keep);
}

Status MoveByCopying::sync() const {
  const Descriptor copy(darwin::openAt(to_.at(), to_.folder.valid() ? "." : to_.name.c_str(), O_RDONLY | O_NONBLOCK));
  if (!copy.valid() || darwin::flushVolume(copy.get()) != 0) return systemError(destination_);
  return {};
}

// Out of sight first: from then on nobody but who has it open changes it, and a process that is killed halfway leaves
// no half of it under its name.
Status MoveByCopying::removeOriginal() {
  std::string name;
  int hidden = -1;
  for (int attempt = 0; attempt < kAttempts && hidden != 0; ++attempt) {
    name = hiddenName(from_, attempt);
    hidden = renameKeeping(from_.at(), from_.name, from_.at(), name);
    if (hidden != 0 && errno != EEXIST) break;
  }
  if (hidden != 0) return systemError(source_);

  bool isFirst = true;  // which is removed last
  bool isSame = true;
  const auto isStillCopied = [&](int folder, const std::string& entry, const std::string& path) {
    Status same = report_.isSame(folder, entry, path);
    isSame = same.ok();
    if (isSame && !isFirst) isOriginalWhole_ = false;
    isFirst = false;
    return same;
  };
  const Status removed = removeItem(from_.at(), name, source_, isStillCopied);
  // A remnant that merely cannot be removed, and that the copy holds too, must not pass for the original.
  if (!removed && (isOriginalWhole_ || !isSame)) putBack(name);
  return removed;
}

// Under its name, or with a number where another program has taken that meanwhile.
void MoveByCopying::putBack(const std::string& hidden) const {
  std::string name = from_.name;
  for (int number = 2; renameKeeping(from_.at(), hidden, from_.at(), name) != 0 && errno == EEXIST; ++number)
    name = from_.name + " " + std::to_string(number);
}

// Another program may have put an item of its own in the place of the copy.
void MoveByCopying::removeCopy() const {
  ItemStatus now;
  if (darwin::statusAt(to_.at(), to_.name.c_str(), AtEnd::KeepLink, now) != 0 || !isSameItem(now, copy_)) return;
  const std::string hidden = hiddenName(to_, 0);
  const bool isHidden = renameKeeping(to_.at(), to_.name, to_.at(), hidden) == 0;
  (void)removeItem(to_.at(), isHidden ? hidden : to_.name, destination_);
}

}  // namespace

// Tries again where a leftover has the name, or where another process took the new item for one.
Result<HiddenItem> HiddenItem::create(const std::string& path, Kind kind) {
  Result<Place> place = openFolderOf(path);
  if (!place) return place.error();
  for (int attempt = 0, number = 0; attempt < kAttempts; ++attempt) {
    const std::string name = hiddenName(*place, number);
    Descriptor item = makeHeld(*place, name, kind);
    if (item.valid()) {
      if (!takeHold(Work::Ours, item.get(), *place, name)) continue;
      HiddenItem made(std::move(*place), name, std::move(item), kind, path);
      if (darwin::dropAccessList(made.get()) != 0 && !darwin::isUnsupported(errno)) return systemError(path);
      return made;
    }
    if (errno == ENOENT && kind == Kind::Folder) {
      ItemStatus folder;
      if (darwin::statusAt(AT_FDCWD, paths::parent(path).c_str(), AtEnd::FollowLink, folder) == 0) continue;
      errno = ENOENT;
    }
    if (errno != EEXIST) return systemError(path);
    if (!clearLeftover(*place, name, path)) ++number;
  }
  return errorWithText(std::errc::device_or_resource_busy, path, "others are writing to the same place");
}

// For a moment nobody holds the name: whoever takes it then is in the right, and the clone fails.
Result<bool> HiddenItem::becomeCloneOf(int source, const ItemStatus& status, const std::string& path,
                                       CopyReport& report) {
  ItemStatus own;
  if (darwin::statusOf(item_.get(), own) != 0) return systemError(path_);
  if (own.device != status.device || (status.flags & darwin::kOnlyInCloud) != 0) return false;
  if (darwin::removeFile(place_.at(), hidden_.c_str()) != 0) return systemError(path_);
  const Place hidden{place_.folder.valid() ? Descriptor(fcntl(place_.folder.get(), F_DUPFD_CLOEXEC, 0)) : Descriptor(),
                     hidden_};
  Result<Descriptor> cloned = cloneFile(source, status, hidden, path, report);
  if (!cloned) {
    hidden_.clear();
    return cloned.error();
  }
  const bool isClone = cloned->valid();
  item_ = isClone ? std::move(*cloned) : makeHeld(place_, hidden_, Kind::File);
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
  if (kind_ == Kind::File) return systemError(path_, EISDIR);
  if (darwin::exchange(place_.at(), hidden_.c_str(), place_.at(), place_.name.c_str()) != 0) {
    if (darwin::isUnsupported(errno))
      return errorWithText(std::errc::not_supported, path_, "this file system replaces no folder in one step");
    return systemError(path_);
  }
  discard();  // now the old item bears the hidden name
  return {};
}

Result<std::unique_ptr<StagedCopy>> stage(const Descriptor& source, const ItemStatus& status,
                                          const CopyRequest& request, CopyReport& report) {
  const bool isFolder = S_ISDIR(status.mode);
  auto hidden = HiddenItem::create(request.destination, isFolder ? HiddenItem::Kind::Folder : HiddenItem::Kind::File);
  if (!hidden) return hidden.error();
  Status copied;
  if (request.content) {
    if (isFolder) return errorWithText(std::errc::invalid_argument, request.source, "is no file");
    copied = hold(*request.content, source, status, hidden->get(), request);
  } else if (isFolder) {
    copied = copyTree(source.get(), hidden->get(), request.source, report);
  } else {
    const Result<bool> isClone = hidden->becomeCloneOf(source.get(), status, request.source, report);
    if (!isClone) return isClone.error();
    if (!*isClone) copied = copyFile(source.get(), status, hidden->get(), request.source, report);
  }
  if (!copied) return copied.error();
  return std::unique_ptr<StagedCopy>(std::make_unique<StagedItem>(std::move(*hidden), report.takeNotes()));
}

Result<Notes> moveByCopying(const std::string& source, const std::string& destination) {
  Result<Place> from = openFolderOf(source);
  if (!from) return from.error();
  Result<Place> to = openFolderOf(destination);
  if (!to) return to.error();
  return MoveByCopying(std::move(*from), std::move(*to), source, destination).run();
}

}  // namespace vantory::macos
