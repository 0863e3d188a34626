// Answers the interface of the disk by the parts beside it.
#include "platform/linux/files/LinuxFileSystem.h"

#include <fcntl.h>
#include <linux/stat.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include "base/Paths.h"
#include "platform/linux/files/FileCopy.h"
#include "platform/linux/files/Folders.h"
#include "platform/linux/files/Moving.h"
#include "platform/linux/files/Staging.h"
#include "platform/posix/files/Errors.h"
#include "platform/posix/files/FileContent.h"
#include "platform/posix/files/FileTypes.h"
#include "platform/posix/files/OpenFiles.h"

namespace vantory {
namespace {

constexpr mode_t kPrivate = S_IRUSR | S_IWUSR;

FileInfo infoOf(const struct statx& status) {
  FileInfo info;
  info.type = typeOfMode(status.stx_mode);
  info.size = status.stx_size;
  info.modified = {status.stx_mtime.tv_sec, static_cast<std::int32_t>(status.stx_mtime.tv_nsec)};
  info.identity = {makedev(status.stx_dev_major, status.stx_dev_minor), status.stx_ino};
  info.locked = (status.stx_attributes & STATX_ATTR_IMMUTABLE) != 0;
  info.owner = status.stx_uid;
  return info;
}

// What a replaced file passes on to its successor.
void keepAttributes(int old, int successor, const FileRights& rights, const std::string& path) {
  struct stat status;
  if (fstat(old, &status) != 0) return;
  if (rights.isSuperuser()) (void)!fchown(successor, status.st_uid, status.st_gid);
  CopyReport ignored;
  const timespec now[2] = {{0, UTIME_NOW}, {0, UTIME_NOW}};
  (void)copyAttributes(old, status, successor, path, path, {rights}, ignored);
  futimens(successor, now);
}

}  // namespace

// A terminal of that name does not become this process's own.
Result<Descriptor> LinuxFileSystem::openAt(const std::string& path, int flags, mode_t mode) const {
  Result<Place> place = rights_.locate(path);
  if (!place) return place.error();
  Descriptor opened(uninterrupted([&] {
    return openat(place->at(), place->name.c_str(), flags | O_CLOEXEC | O_NOCTTY | rights_.noFollowFlag(), mode);
  }));
  if (!opened.valid()) return systemError(path);
  return opened;
}

Result<FileInfo> LinuxFileSystem::info(const std::string& path, Links links) const {
  const FileRights::Scope scope(rights_);
  Result<Place> place = rights_.locate(path);
  if (!place) return place.error();
  // Administrator rights follow no link at the end of a path: a user may have made it.
  const bool follow = links == Links::Follow && !rights_.isAdministrator();
  struct statx status;
  if (statx(place->at(), place->name.c_str(), follow ? 0 : AT_SYMLINK_NOFOLLOW, STATX_BASIC_STATS, &status) != 0)
    return systemError(path);
  return infoOf(status);
}

Result<std::vector<DirectoryEntry>> LinuxFileSystem::list(const std::string& path, Detail detail) const {
  const FileRights::Scope scope(rights_);
  Result<Descriptor> folder = openAt(path, O_RDONLY | O_DIRECTORY | O_NONBLOCK);
  if (!folder) return folder.error();
  return readFolder(folder->get(), path, detail);
}

Result<std::string> LinuxFileSystem::read(const std::string& path) const {
  const FileRights::Scope scope(rights_);
  Result<Descriptor> file = openAt(path, O_RDONLY | O_NONBLOCK);
  if (!file) return file.error();
  struct stat status;
  if (fstat(file->get(), &status) != 0) return systemError(path);
  if (!S_ISREG(status.st_mode)) return errorWithText(std::errc::invalid_argument, path, "is no file");
  if (static_cast<std::uint64_t>(status.st_size) > kLargestReadBytes)
    return errorWithText(std::errc::file_too_large, path, "is too large to be read");

  // One byte more than expected, so that the end is usually found by the first call.
  std::string bytes(static_cast<std::size_t>(status.st_size) + 1, '\0');
  std::size_t length = 0;
  for (;;) {
    const ssize_t count = uninterrupted([&] { return ::read(file->get(), &bytes[length], bytes.size() - length); });
    if (count < 0) return systemError(path);
    length += static_cast<std::size_t>(count);
    if (count == 0 || length < bytes.size()) break;
    if (length > kLargestReadBytes) return errorWithText(std::errc::file_too_large, path, "is too large to be read");
    bytes.resize(bytes.size() * 2);
  }
  bytes.resize(length);
  return bytes;
}

Result<bool> LinuxFileSystem::haveSameContent(const std::string& path, const std::string& other) const {
  const FileRights::Scope scope(rights_);
  const Result<Descriptor> files[] = {openAt(path, O_RDONLY | O_NONBLOCK), openAt(other, O_RDONLY | O_NONBLOCK)};
  const std::string* names[] = {&path, &other};
  struct stat status[2];
  for (std::size_t i = 0; i < 2; ++i) {
    if (!files[i]) return files[i].error();
    if (fstat(files[i]->get(), &status[i]) != 0) return systemError(*names[i]);
    if (!S_ISREG(status[i].st_mode)) return errorWithText(std::errc::invalid_argument, *names[i], "is no file");
  }
  if (status[0].st_size != status[1].st_size) return false;
  return vantory::haveSameContent(files[0]->get(), path, files[1]->get(), other);
}

// The new file is complete, and has what the old one had, before it takes the name.
Status LinuxFileSystem::write(const std::string& path, std::string_view bytes, WriteOptions options) {
  const FileRights::Scope scope(rights_);
  Result<Place> place = rights_.locate(path);
  if (!place) return place.error();
  struct stat there;
  if (fstatat(place->at(), place->name.c_str(), &there, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(there.st_mode))
    return systemError(path, EISDIR);
  Result<UnnamedFile> file = UnnamedFile::create(*place, path);
  if (!file) return file.error();
  if (const Status written = writeAll(file->get(), bytes, path); !written) return written;
  const Descriptor old = openSource(place->at(), place->name.c_str(), O_NOFOLLOW);
  if (old.valid())
    keepAttributes(old.get(), file->get(), rights_, path);
  else if (const Status given = rights_.giveAway(file->get(), path, getuid(), getgid()); !given)
    return given;
  if (options.durable && fsync(file->get()) != 0) return systemError(path);
  if (const Status named = file->name(*place, path, StagedCopy::Existing::Replace); !named) return named;
  if (!options.durable) return {};

  Result<Descriptor> folder = openAt(paths::parent(path), O_RDONLY | O_DIRECTORY);
  if (folder && fsync(folder->get()) != 0 && errno != EINVAL) return systemError(path);
  return {};
}

// A new file is its owner's alone. A FIFO in its place is refused instead of waited for.
Result<std::unique_ptr<AppendFile>> LinuxFileSystem::openForAppending(const std::string& path) {
  const FileRights::Scope scope(rights_);
  Result<Descriptor> file = openAt(path, O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_NONBLOCK, kPrivate);
  if (!file) return file.error();
  struct stat status;
  if (fstat(file->get(), &status) != 0) return systemError(path);
  if (!S_ISREG(status.st_mode)) return errorWithText(std::errc::invalid_argument, path, "is no file");
  if (rights_.isAdministrator() && status.st_nlink != 1) return systemError(path, EPERM);  // whose else is it?
  return std::unique_ptr<AppendFile>(std::make_unique<OpenAppendFile>(std::move(*file), path));
}

// Below its root nothing is reached by a link: a backup may come from anywhere.
Result<Descriptor> LinuxFileSystem::openCopySource(const CopyRequest& request) const {
  if (request.sourceRoot.empty()) {
    Result<Place> place = rights_.locate(request.source);
    if (!place) return place.error();
    const bool follow = request.links == Links::Follow && !rights_.isAdministrator();
    Descriptor source = openSource(place->at(), place->name.c_str(), follow ? 0 : O_NOFOLLOW);
    if (!source.valid()) return systemError(request.source);
    return source;
  }
  const std::string& root = request.sourceRoot;
  if (request.source.size() <= root.size() + 1 || request.source.compare(0, root.size(), root) != 0 ||
      request.source[root.size()] != '/')
    return errorWithText(std::errc::invalid_argument, request.source, "does not lie in " + root);
  Result<Descriptor> folder = openAt(root, O_PATH | O_DIRECTORY);
  if (!folder) return folder.error();
  Descriptor source =
      openBeneath(folder->get(), request.source.substr(root.size() + 1), O_RDONLY | O_NONBLOCK | O_NOCTTY);
  if (!source.valid()) return systemError(request.source);
  return source;
}

Result<std::unique_ptr<StagedCopy>> LinuxFileSystem::stageCopy(const CopyRequest& request) {
  const FileRights::Scope scope(rights_);
  Result<Descriptor> source = openCopySource(request);
  if (!source) return source.error();
  struct stat status;
  if (fstat(source->get(), &status) != 0) return systemError(request.source);
  if (!S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode))
    return errorWithText(std::errc::invalid_argument, request.source, "is neither a file nor a folder");
  if (!rights_.mayCopy(status)) return systemError(request.source, EPERM);
  Result<Place> destination = rights_.locate(request.destination);
  if (!destination) return destination.error();
  if (request.content) {
    if (!S_ISREG(status.st_mode)) return errorWithText(std::errc::invalid_argument, request.source, "is no file");
    return stageChanged(*source, status, request, std::move(*destination), rights_);
  }
  CopyReport report(request.observer);
  if (S_ISDIR(status.st_mode))
    return stageFolder(std::move(*source), request, std::move(*destination), rights_, report);
  return stageFile(*source, status, request, std::move(*destination), rights_, report);
}

Status LinuxFileSystem::copyLink(const std::string& source, const std::string& destination) {
  const FileRights::Scope scope(rights_);
  const Result<Place> from = rights_.locate(source);
  if (!from) return from.error();
  const Result<Place> to = rights_.locate(destination);
  if (!to) return to.error();
  CopyReport report;
  return vantory::copyLink(from->at(), from->name.c_str(), to->at(), to->name.c_str(), source, destination, rights_,
                           report);
}

// Only onto another file system is it a copy, after which the original is removed.
Result<Notes> LinuxFileSystem::move(const std::string& source, const std::string& destination) {
  const FileRights::Scope scope(rights_);
  Result<Place> from = rights_.locate(source);
  if (!from) return from.error();
  Result<Place> to = rights_.locate(destination);
  if (!to) return to.error();
  const Status renamed = renameItem(*from, to->at(), to->name, destination);
  if (renamed) return Notes();
  if (renamed.error().code != std::errc::cross_device_link) return renamed.error();
  return moveByCopying(*from, *to, source, destination, rights_);
}

Status LinuxFileSystem::remove(const std::string& path) {
  const FileRights::Scope scope(rights_);
  Result<Place> place = rights_.locate(path);
  if (!place) return place.error();
  return removeItem(place->at(), place->name, path);
}

Status LinuxFileSystem::makeFolder(const std::string& path) {
  const FileRights::Scope scope(rights_);
  return createFolders(path, rights_);
}

Result<Trashed> LinuxFileSystem::trash(const std::string& path, const std::string& trashFolder) {
  if (rights_.isAdministrator())
    return errorWithText(std::errc::operation_not_permitted, path, "the Trash takes a user's own items only");
  return trash_.put(path, trashFolder);
}

// One call for all that was written to this file system.
Status LinuxFileSystem::sync(const std::string& path) {
  const FileRights::Scope scope(rights_);
  Result<Descriptor> item = openAt(path, O_RDONLY | O_NONBLOCK);
  if (!item) return item.error();
  if (syncfs(item->get()) != 0) return systemError(path);
  return {};
}

Result<std::unique_ptr<FolderHold>> LinuxFileSystem::holdFolder(const std::string& path,
                                                                std::chrono::milliseconds wait) {
  Descriptor held;
  {
    const FileRights::Scope scope(rights_);
    // A folder of the superuser's could be held by whoever may look into it, a file of that name by the superuser only.
    Result<Descriptor> opened = rights_.isAdministrator()
                                    ? openAt(path + "/.vantory-hold", O_RDONLY | O_CREAT | O_NOFOLLOW, kPrivate)
                                    : openAt(path, O_RDONLY | O_NONBLOCK);
    if (!opened) return opened.error();
    held = std::move(*opened);
  }
  return holdOpen(std::move(held), path, wait);
}

}  // namespace vantory
