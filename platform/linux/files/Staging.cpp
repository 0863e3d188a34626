// Puts copies together without a name, and commits them.
#include "platform/linux/files/Staging.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <stdio.h>
#include <sys/file.h>

#include <vector>

#include "base/Paths.h"
#include "platform/StagingName.h"
#include "platform/linux/files/Folders.h"
#include "platform/linux/files/TreeCopy.h"
#include "platform/posix/files/Errors.h"
#include "platform/posix/files/OpenFiles.h"

namespace vantory {
namespace {

// How often a name may be taken from under us before we give up.
constexpr int kAttempts = 16;

// The folder and leaf of a place: a place without an open folder holds both in its name.
std::string folderOf(const Place& place) {
  return place.folder.valid() ? "." : paths::parent(place.name);
}

std::string leafOf(const Place& place) {
  return place.folder.valid() ? place.name : paths::lastComponent(place.name);
}

// A folder and the file change places; then the folder, which bears the hidden name, is removed.
int renameOver(int fromFolder, const std::string& hidden, const Place& to, const std::string& path) {
  const char *from = hidden.c_str(), *final = to.name.c_str();
  const int renamed = uninterrupted([&] { return renameat(fromFolder, from, to.at(), final); });
  if (renamed == 0 || errno != EISDIR) return renamed;
  if (uninterrupted([&] { return renameat2(fromFolder, from, to.at(), final, RENAME_EXCHANGE); }) != 0) {
    if (errno == EINVAL) errno = EOPNOTSUPP;  // by the file system
    return -1;
  }
  (void)removeItem(fromFolder, hidden, path);
  return 0;
}

enum class Work { Ours, LeftBehind };

// Takes hold of an open item of unfinished work, if nobody else has it and it still bears the name. Where the file
// system knows no locks everybody has their own, and nobody can tell what was left behind.
bool takeHold(Work work, int item, int folder, const std::string& name) {
  struct stat opened;
  struct stat named;
  if (uninterrupted([&] { return flock(item, LOCK_EX | LOCK_NB); }) != 0 &&
      (errno == EWOULDBLOCK || work == Work::LeftBehind))
    return false;
  return fstat(item, &opened) == 0 && fstatat(folder, name.c_str(), &named, AT_SYMLINK_NOFOLLOW) == 0 &&
         opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

// A file that has everything but its name.
class StagedFile : public StagedCopy {
 public:
  StagedFile(UnnamedFile file, Place destination, std::string path, const FileRights& rights, Notes notes)
      : file_(std::move(file)),
        destination_(std::move(destination)),
        path_(std::move(path)),
        rights_(rights),
        notes_(std::move(notes)) {}
  ~StagedFile() override {
    const FileRights::Scope scope(rights_);
    file_.discard();
  }

  Status commit(Existing existing) override {
    const FileRights::Scope scope(rights_);
    return file_.name(destination_, path_, existing);
  }
  const Notes& notes() const override { return notes_; }

 private:
  UnnamedFile file_;
  Place destination_;
  std::string path_;
  const FileRights& rights_;
  Notes notes_;
};

// The hidden folder in which a copy is put together. It is locked while somebody works in it, so that what a killed
// process left can be told from what a live one needs.
class StagingFolder {
 public:
  // Tries again where a leftover has the name, or where another process took the new folder for one.
  static Result<StagingFolder> create(const Place& destination, const std::string& path, const FileRights& rights) {
    Result<Place> parent = openFolderOf(destination, path);
    if (!parent) return parent.error();
    const int above = parent->folder.get();
    for (int attempt = 0, number = 0; attempt < kAttempts; ++attempt) {
      const std::string name = stagingName(parent->name, number);
      if (uninterrupted([&] { return mkdirat(above, name.c_str(), S_IRWXU); }) == 0) {
        Descriptor folder = rights.openNewFolder(above, name);
        if (!folder.valid() && errno == ENOENT) continue;  // another process took it for a leftover
        if (!folder.valid() || !dropInherited(folder.get())) {
          const Error error = systemError(path);
          unlinkat(above, name.c_str(), AT_REMOVEDIR);
          return error;
        }
        if (takeHold(Work::Ours, folder.get(), above, name))
          return StagingFolder(std::move(*parent), name, std::move(folder), path);
      } else if (errno != EEXIST) {
        return systemError(path);
      } else if (!clearLeftover(above, name, path)) {
        ++number;
      }
    }
    return errorWithText(std::errc::device_or_resource_busy, path, "others are copying to the same place");
  }

  StagingFolder(StagingFolder&&) noexcept = default;
  StagingFolder& operator=(StagingFolder&&) = delete;
  ~StagingFolder() { discard(); }

  const Descriptor& folder() const { return folder_; }

  void discard() {
    if (!parent_.folder.valid()) return;
    (void)removeItem(parent_.folder.get(), name_, path_);
    parent_.folder = Descriptor();
  }

  // An old folder and the new one change places in one step; then the old one is removed.
  Status name(StagedCopy::Existing existing) {
    const int parent = parent_.folder.get();
    const char* final = parent_.name.c_str();
    if (existing == StagedCopy::Existing::Replace) {
      if (uninterrupted([&] { return renameat2(parent, name_.c_str(), parent, final, RENAME_EXCHANGE); }) == 0) {
        discard();  // now the old folder bears the hidden name
        return {};
      }
      struct stat old;
      if (errno == EINVAL && fstatat(parent, final, &old, AT_SYMLINK_NOFOLLOW) == 0)
        return errorWithText(std::errc::not_supported, path_, "this file system replaces no folder in one step");
    }
    if (renameKeeping(parent, name_.c_str(), parent, final) != 0) return systemError(path_);
    parent_.folder = Descriptor();
    return {};
  }

 private:
  StagingFolder(Place parent, std::string name, Descriptor folder, std::string path)
      : parent_(std::move(parent)), name_(std::move(name)), folder_(std::move(folder)), path_(std::move(path)) {}

  // What a killed process left is not held by anybody.
  static bool clearLeftover(int parent, const std::string& name, const std::string& path) {
    const Descriptor left(
        uninterrupted([&] { return openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC); }));
    return left.valid() && takeHold(Work::LeftBehind, left.get(), parent, name) && removeItem(parent, name, path).ok();
  }

  Place parent_;      // the open folder, and the final name
  std::string name_;  // the hidden one
  Descriptor folder_;
  std::string path_;
};

// A folder that bears a hidden name until it is put in place.
class StagedFolder : public StagedCopy {
 public:
  StagedFolder(StagingFolder folder, const FileRights& rights, Notes notes)
      : folder_(std::move(folder)), rights_(rights), notes_(std::move(notes)) {}
  ~StagedFolder() override {
    const FileRights::Scope scope(rights_);
    folder_.discard();
  }

  Status commit(Existing existing) override {
    const FileRights::Scope scope(rights_);
    return folder_.name(existing);
  }
  const Notes& notes() const override { return notes_; }

 private:
  StagingFolder folder_;
  const FileRights& rights_;
  Notes notes_;
};

}  // namespace

Result<Place> openFolderOf(const Place& place, const std::string& path) {
  Place opened{Descriptor(openat(place.at(), folderOf(place).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)),
               leafOf(place)};
  if (!opened.folder.valid()) return systemError(path);
  return opened;
}

int renameKeeping(int fromFolder, const char* from, int toFolder, const char* to) {
  const int renamed = uninterrupted([&] { return renameat2(fromFolder, from, toFolder, to, RENAME_NOREPLACE); });
  if (renamed == 0 || errno != EINVAL) return renamed;
  // A file system that cannot promise it: look first.
  struct stat status;
  if (fstatat(toFolder, to, &status, AT_SYMLINK_NOFOLLOW) == 0) {
    errno = EEXIST;
    return -1;
  }
  return errno == ENOENT ? renameat(fromFolder, from, toFolder, to) : -1;
}

Result<UnnamedFile> UnnamedFile::create(const Place& destination, const std::string& path) {
  constexpr mode_t kPrivate = S_IRUSR | S_IWUSR;
  Descriptor file(uninterrupted([&] {
    return openat(destination.at(), folderOf(destination).c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, kPrivate);
  }));
  if (file.valid()) {
    if (!dropInherited(file.get())) return systemError(path);
    return UnnamedFile(std::move(file));
  }
  if (errno != EOPNOTSUPP && errno != EISDIR && errno != EINVAL) return systemError(path);

  Result<Place> folder = openFolderOf(destination, path);
  if (!folder) return folder.error();
  const int above = folder->folder.get();
  for (int attempt = 0, number = 0; attempt < kAttempts; ++attempt) {
    const std::string name = stagingName(folder->name, number);
    Descriptor named(uninterrupted(
        [&] { return openat(above, name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kPrivate); }));
    if (named.valid()) {
      if (!takeHold(Work::Ours, named.get(), above, name)) continue;  // another process took it for a leftover
      const bool isPrivate = dropInherited(named.get());
      const int error = errno;
      UnnamedFile result(std::move(named));
      result.hidden_ = std::make_unique<Place>(Place{std::move(folder->folder), name});
      if (!isPrivate) return systemError(path, error);
      return result;
    }
    if (errno != EEXIST) return systemError(path);
    // What a killed process left is not locked.
    const Descriptor left(openat(above, name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!left.valid() || !takeHold(Work::LeftBehind, left.get(), above, name) || unlinkat(above, name.c_str(), 0) != 0)
      ++number;
  }
  return errorWithText(std::errc::device_or_resource_busy, path, "others are writing to the same place");
}

UnnamedFile::~UnnamedFile() {
  discard();
}

void UnnamedFile::discard() {
  if (hidden_) unlinkat(hidden_->folder.get(), hidden_->name.c_str(), 0);
  hidden_.reset();
}

Status UnnamedFile::linkTo(int folder, const std::string& name, const std::string& path) const {
  if (uninterrupted([&] { return linkat(file_.get(), "", folder, name.c_str(), AT_EMPTY_PATH); }) == 0) return {};
  if (errno != ENOENT) return systemError(path);
  // Kernels before 6.10 do that for administrators only.
  const std::string self = "/proc/self/fd/" + std::to_string(file_.get());
  if (uninterrupted([&] { return linkat(AT_FDCWD, self.c_str(), folder, name.c_str(), AT_SYMLINK_FOLLOW); }) != 0)
    return systemError(path);
  return {};
}

Status UnnamedFile::name(const Place& destination, const std::string& path, StagedCopy::Existing existing) {
  if (hidden_) {
    // Closing tells of late errors. Ours stays open, because its lock guards the name.
    Descriptor twin(fcntl(file_.get(), F_DUPFD_CLOEXEC, 0));
    if (!twin.valid() || !twin.closeWritten()) return systemError(path);
    const int renamed =
        existing == StagedCopy::Existing::Replace
            ? renameOver(hidden_->folder.get(), hidden_->name, destination, path)
            : renameKeeping(hidden_->folder.get(), hidden_->name.c_str(), destination.at(), destination.name.c_str());
    if (renamed != 0) return systemError(path);
    hidden_.reset();
    return {};
  }
  Status linked = linkTo(destination.at(), destination.name, path);
  if (linked || existing == StagedCopy::Existing::Keep || linked.error().code != std::errc::file_exists) return linked;
  return replace(destination, path);
}

// A file without a name cannot take another's place: it gets a hidden name first.
Status UnnamedFile::replace(const Place& destination, const std::string& path) {
  Result<Place> folder = openFolderOf(destination, path);
  if (!folder) return folder.error();
  const int parent = folder->folder.get();
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    const std::string hidden = stagingName(folder->name, attempt);
    if (const Status linked = linkTo(parent, hidden, path); !linked) {
      if (linked.error().code != std::errc::file_exists) return linked;
      unlinkat(parent, hidden.c_str(), 0);
      continue;
    }
    if (renameOver(parent, hidden, *folder, path) == 0) return {};
    if (errno == ENOENT) continue;  // another process took ours for a leftover
    const Error error = systemError(path);
    unlinkat(parent, hidden.c_str(), 0);
    return error;
  }
  return errorWithText(std::errc::device_or_resource_busy, path, "others are writing to the same place");
}

Result<std::unique_ptr<StagedCopy>> stageFile(const Descriptor& source, const struct stat& status,
                                              const CopyRequest& request, Place destination, const FileRights& rights,
                                              CopyReport& report) {
  Result<UnnamedFile> copy = UnnamedFile::create(destination, request.destination);
  if (!copy) return copy.error();
  if (const Status copied = copyFileContent(source.get(), status, copy->get(), request.source, request.destination,
                                            {rights, request.checksum, request.mayBeProgram}, report);
      !copied)
    return copied.error();
  return std::unique_ptr<StagedCopy>(std::make_unique<StagedFile>(std::move(*copy), std::move(destination),
                                                                  request.destination, rights, report.takeNotes()));
}

Result<std::unique_ptr<StagedCopy>> stageChanged(const Descriptor& source, const struct stat& status,
                                                 const CopyRequest& request, Place destination,
                                                 const FileRights& rights) {
  Result<UnnamedFile> copy = UnnamedFile::create(destination, request.destination);
  if (!copy) return copy.error();
  std::string_view bytes = *request.content;
  if (Status written = writeAll(copy->get(), bytes, request.destination); !written) return written.error();
  CopyReport report;
  // A checksum would be that of the old content.
  if (Status kept = copyAttributes(source.get(), status, copy->get(), request.source, request.destination,
                                   {rights, CopyChecksum::Check, request.mayBeProgram}, report);
      !kept)
    return kept.error();
  const timespec now[2] = {{0, UTIME_NOW}, {0, UTIME_NOW}};
  if (futimens(copy->get(), now) != 0) return systemError(request.destination);
  return std::unique_ptr<StagedCopy>(std::make_unique<StagedFile>(std::move(*copy), std::move(destination),
                                                                  request.destination, rights, report.takeNotes()));
}

Result<std::unique_ptr<StagedCopy>> stageFolder(Descriptor source, const CopyRequest& request, Place destination,
                                                const FileRights& rights, CopyReport& report) {
  Result<StagingFolder> staging = StagingFolder::create(destination, request.destination, rights);
  if (!staging) return staging.error();
  Descriptor copy(fcntl(staging->folder().get(), F_DUPFD_CLOEXEC, 0));
  if (!copy.valid()) return systemError(request.destination);
  if (const Status copied = copyTree(std::move(source), std::move(copy), request.source, request.destination,
                                     {rights, request.checksum, request.mayBeProgram}, report);
      !copied)
    return copied.error();
  return std::unique_ptr<StagedCopy>(std::make_unique<StagedFolder>(std::move(*staging), rights, report.takeNotes()));
}

// A folder's own write permission is needed to move it to another, because its ".." changes.
Status renameItem(const Place& from, int toFolder, const std::string& toName, const std::string& path) {
  if (renameKeeping(from.at(), from.name.c_str(), toFolder, toName.c_str()) == 0) return {};
  if (errno != EACCES) return systemError(path);
  const Descriptor folder(openat(from.at(), from.name.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  struct stat status;
  if (!folder.valid() || fstat(folder.get(), &status) != 0 || (status.st_mode & S_IWUSR) != 0 || !openUp(folder.get()))
    return errorWithText(std::errc::permission_denied, path, std::generic_category().message(EACCES));
  const int renamed = renameKeeping(from.at(), from.name.c_str(), toFolder, toName.c_str());
  const Error error = systemError(path);
  const std::string self = "/proc/self/fd/" + std::to_string(folder.get());
  chmod(self.c_str(), status.st_mode & 07777U);
  if (renamed != 0) return error;
  return {};
}

}  // namespace vantory
