// Copies, waits for the disk, looks at the original again and removes it.
#include "platform/linux/files/Moving.h"

#include <fcntl.h>

#include "platform/linux/files/CopiedItems.h"
#include "platform/linux/files/FileCopy.h"
#include "platform/linux/files/Folders.h"
#include "platform/linux/files/Staging.h"
#include "platform/posix/files/Errors.h"
#include "platform/posix/files/Names.h"

namespace vantory {
namespace {

constexpr int kAttempts = 16;

// One move: both folders are open.
class MoveByCopying {
 public:
  MoveByCopying(Place from, Place to, const std::string& source, const std::string& destination,
                const FileRights& rights)
      : from_(std::move(from)), to_(std::move(to)), source_(source), destination_(destination), rights_(rights) {}

  Result<Notes> run();

 private:
  Status copy(CopyReport& report);
  Status stageAndName(CopyReport& report);
  Status sync() const;
  Status removeOriginal();
  void putBack(const std::string& hidden) const;
  void removeCopy() const;

  const Place from_;
  const Place to_;
  const std::string& source_;
  const std::string& destination_;
  const FileRights& rights_;
  CopiedItems copied_;
  struct stat copy_ = {};
  Notes notes_;
  bool isOriginalWhole_ = true;
};

// The original goes last, when the copy is on the disk and nothing has changed meanwhile.
Result<Notes> MoveByCopying::run() {
  CopyReport report(copied_);
  if (const Status copied = copy(report); !copied) return copied.error();
  Status moved = sync();
  if (moved) moved = copied_.lookAgain(from_.at(), from_.name, source_);
  if (moved) moved = removeOriginal();
  if (moved) return std::move(notes_);
  if (isOriginalWhole_) {
    removeCopy();
    return moved.error();
  }
  return Error{moved.error().code, moved.error().text + ". The rest is in " + destination_ + " already"};
}

// Notes which item the copy is, in case it has to go again.
Status MoveByCopying::copy(CopyReport& report) {
  struct stat status;
  if (fstatat(from_.at(), from_.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return systemError(source_);
  Status copied = S_ISLNK(status.st_mode) ? copyLink(from_.at(), from_.name.c_str(), to_.at(), to_.name.c_str(),
                                                     source_, destination_, rights_, report)
                                          : stageAndName(report);
  if (copied && fstatat(to_.at(), to_.name.c_str(), &copy_, AT_SYMLINK_NOFOLLOW) != 0) return systemError(destination_);
  return copied;
}

Status MoveByCopying::stageAndName(CopyReport& report) {
  Descriptor source = openSource(from_.at(), from_.name.c_str(), O_NOFOLLOW);
  struct stat status;
  if (!source.valid() || fstat(source.get(), &status) != 0) return systemError(source_);
  if (!S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode))
    return errorWithText(std::errc::not_supported, source_, "a special file cannot be moved to another disk");
  if (!rights_.mayCopy(status)) return systemError(source_, EPERM);
  Place to{Descriptor(fcntl(to_.at(), F_DUPFD_CLOEXEC, 0)), to_.name};
  if (!to.folder.valid()) return systemError(destination_);
  const CopyRequest request{.source = source_, .destination = destination_};
  auto staged = S_ISDIR(status.st_mode) ? stageFolder(std::move(source), request, std::move(to), rights_, report)
                                        : stageFile(source, status, request, std::move(to), rights_, report);
  if (!staged) return staged.error();
  notes_ = (*staged)->notes();
  return (*staged)->commit(StagedCopy::Existing::Keep);
}

// By the folder, or where that may not be read by the copy in it.
Status MoveByCopying::sync() const {
  Descriptor place(openat(to_.at(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!place.valid()) place = openSource(to_.at(), to_.name.c_str(), O_NOFOLLOW);
  if (!place.valid() || syncfs(place.get()) != 0) return systemError(destination_);
  return {};
}

// Out of sight first: from then on nobody but who has it open changes it, and a process that is killed halfway leaves
// no half of it under its name.
Status MoveByCopying::removeOriginal() {
  std::string name;
  int hidden = -1;
  for (int attempt = 0; attempt < kAttempts && hidden != 0; ++attempt) {
    name = stagingName(from_.name, attempt);
    hidden = renameKeeping(from_.at(), from_.name.c_str(), from_.at(), name.c_str());
    if (hidden != 0 && errno != EEXIST) break;
  }
  // What could not be renamed for being an overlay's cannot be hidden there either.
  if (hidden != 0 && errno != EXDEV) return systemError(source_);

  bool isFirst = true;  // which is removed last
  bool isSame = true;
  const auto isStillCopied = [&](int folder, const std::string& entry, const std::string& path) {
    Status same = copied_.isSame(folder, entry, path);
    isSame = same.ok();
    if (isSame && !isFirst) isOriginalWhole_ = false;
    isFirst = false;
    return same;
  };
  const Status removed = removeItem(from_.at(), hidden == 0 ? name : from_.name, source_, isStillCopied);
  // A remnant that merely cannot be removed, and that the copy holds too, must not pass for the original.
  if (!removed && hidden == 0 && (isOriginalWhole_ || !isSame)) putBack(name);
  return removed;
}

// Under its name, or with a number where another program has taken that meanwhile.
void MoveByCopying::putBack(const std::string& hidden) const {
  std::string name = from_.name;
  for (int number = 2; renameKeeping(from_.at(), hidden.c_str(), from_.at(), name.c_str()) != 0 && errno == EEXIST;
       ++number)
    name = from_.name + " " + std::to_string(number);
}

// Another program may have put an item of its own in the place of the copy.
void MoveByCopying::removeCopy() const {
  struct stat now;
  const bool isOurs = fstatat(to_.at(), to_.name.c_str(), &now, AT_SYMLINK_NOFOLLOW) == 0 &&
                      now.st_dev == copy_.st_dev && now.st_ino == copy_.st_ino;
  if (isOurs) (void)removeAtOnce(to_, destination_);
}

}  // namespace

Result<Notes> moveByCopying(const Place& from, const Place& to, const std::string& source,
                            const std::string& destination, const FileRights& rights) {
  Result<Place> original = openFolderOf(from, source);
  if (!original) return original.error();
  Result<Place> copy = openFolderOf(to, destination);
  if (!copy) return copy.error();
  return MoveByCopying(std::move(*original), std::move(*copy), source, destination, rights).run();
}

}  // namespace vantory
