// Copies, waits for the disk, looks at the original again and removes it.
#include "platform/posix/files/Moving.h"

#include <sys/stat.h>

#include "base/Paths.h"
#include "platform/StagingName.h"
#include "platform/posix/files/Errors.h"
#include "platform/posix/files/FileTypes.h"

namespace vantory {
namespace {

// How often a name may be taken from under us before we give up.
constexpr int kAttempts = 16;

// The hidden name beside an item: with no folder open a whole path.
std::string hiddenName(const Place& place, int attempt) {
  const std::string name = stagingName(paths::lastComponent(place.name), attempt);
  return place.folder.valid() ? name : paths::join(paths::parent(place.name), name);
}

Error changedWhileMoved(const std::string& path) {
  return {std::errc::device_or_resource_busy, path + ": it changed while it was moved, and stays"};
}

// It is new, or of a kind that no copy takes.
Error notCopied(const std::string& path, FileType type) {
  if (type != FileType::Other)
    return {std::errc::device_or_resource_busy, path + ": it appeared while its folder was moved, and stays"};
  return {std::errc::not_supported, path + ": a special file cannot be moved to another disk, and stays"};
}

class MoveByCopying {
 public:
  MoveByCopying(const MovingCalls& calls, const Place& from, const Place& to, const std::string& source,
                const std::string& destination)
      : calls_(calls), from_(from), to_(to), source_(source), destination_(destination) {}

  Result<Notes> run();

 private:
  Status copy();
  Status removeOriginal();
  void putBack(const std::string& hidden) const;
  void removeCopy() const;

  const MovingCalls& calls_;
  const Place& from_;
  const Place& to_;
  const std::string& source_;
  const std::string& destination_;
  CopiedItems copied_;
  ItemLook copy_;
  Notes notes_;
  bool isOriginalWhole_ = true;
};

// The original goes last, when the copy is on the disk and nothing has changed meanwhile.
Result<Notes> MoveByCopying::run() {
  if (const Status copied = copy(); !copied) return copied.error();
  Status moved = calls_.sync(to_, destination_);
  if (moved) moved = copied_.lookAgain(calls_, from_.at(), from_.name, source_);
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
  ItemLook original;
  if (calls_.look(from_.at(), from_.name, original) != 0) return systemError(source_);
  Result<Notes> copied = calls_.copy(from_, to_, original, copied_);
  if (!copied) return copied.error();
  notes_ = std::move(*copied);
  if (calls_.look(to_.at(), to_.name, copy_) != 0) return systemError(destination_);
  return {};
}

// Out of sight first: from then on nobody but who has it open changes it, and a process that is killed halfway leaves
// no half of it under its name.
Status MoveByCopying::removeOriginal() {
  std::string name;
  int hidden = -1;
  for (int attempt = 0; attempt < kAttempts && hidden != 0; ++attempt) {
    name = hiddenName(from_, attempt);
    hidden = calls_.renameKeeping(from_.at(), from_.name, name);
    if (hidden != 0 && errno != EEXIST) break;
  }
  // What could not be renamed for being an overlay's cannot be hidden there either.
  if (hidden != 0 && errno != EXDEV) return systemError(source_);

  bool isFirst = true;  // which is removed last
  bool isSame = true;
  const auto isStillCopied = [&](int folder, const std::string& entry, const std::string& path) {
    Status same = copied_.isSame(calls_, folder, entry, path);
    isSame = same.ok();
    if (isSame && !isFirst) isOriginalWhole_ = false;
    isFirst = false;
    return same;
  };
  const Status removed = calls_.remove(from_.at(), hidden == 0 ? name : from_.name, source_, isStillCopied);
  // A remnant that merely cannot be removed, and that the copy holds too, must not pass for the original.
  if (!removed && hidden == 0 && (isOriginalWhole_ || !isSame)) putBack(name);
  return removed;
}

// Under its name, or with a number where another program has taken that meanwhile.
void MoveByCopying::putBack(const std::string& hidden) const {
  std::string name = from_.name;
  for (int number = 2; calls_.renameKeeping(from_.at(), hidden, name) != 0 && errno == EEXIST; ++number)
    name = from_.name + " " + std::to_string(number);
}

// Another program may have put an item of its own in the place of the copy. Hidden first: half of it must not be taken
// for the whole.
void MoveByCopying::removeCopy() const {
  ItemLook now;
  if (calls_.look(to_.at(), to_.name, now) != 0 || !isSameItem(now, copy_)) return;
  const std::string hidden = hiddenName(to_, 0);
  const bool isHidden = calls_.renameKeeping(to_.at(), to_.name, hidden) == 0;
  (void)calls_.remove(to_.at(), isHidden ? hidden : to_.name, destination_, {});
}

}  // namespace

Status CopiedItems::isSame(const MovingCalls& calls, int folder, const std::string& name,
                           const std::string& path) const {
  ItemLook now;
  if (calls.look(folder, name, now) != 0) return systemError(path);
  const auto copied = items_.find(path);
  if (copied == items_.end()) return notCopied(path, typeOfMode(now.mode));
  ItemLook before = copied->second;
  before.changed = now.changed;
  if (!isSameItem(before, now) || (!S_ISDIR(now.mode) && !isUnchanged(before, now))) return changedWhileMoved(path);
  return {};
}

Status CopiedItems::lookAgain(const MovingCalls& calls, int folder, const std::string& name, const std::string& path,
                              int depth) const {
  if (depth > kDeepestFolder)
    return errorWithText(std::errc::filename_too_long, path, "the folder is nested too deeply");
  ItemLook now;
  if (calls.look(folder, name, now) != 0) return systemError(path);
  const auto copied = items_.find(path);
  if (copied == items_.end()) return notCopied(path, typeOfMode(now.mode));
  if (!isSameItem(copied->second, now) || !isUnchanged(copied->second, now)) return changedWhileMoved(path);
  if (now.isLocked) return systemError(path, EPERM);
  if (!S_ISDIR(now.mode)) return {};

  const Descriptor opened = calls.openFolder(folder, name);
  if (!opened.valid()) return systemError(path);
  const auto entries = calls.entries(opened.get(), path);
  if (!entries) return entries.error();
  for (const DirectoryEntry& entry : *entries)
    if (Status same = lookAgain(calls, opened.get(), entry.name, path + "/" + entry.name, depth + 1); !same)
      return same;
  return {};
}

Result<Notes> moveByCopying(const MovingCalls& calls, const Place& from, const Place& to, const std::string& source,
                            const std::string& destination) {
  return MoveByCopying(calls, from, to, source, destination).run();
}

}  // namespace vantory
