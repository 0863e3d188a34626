// Answers the interface of the disk by the parts beside it.
#include "platform/macos/files/MacFileSystem.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "base/Paths.h"
#include "platform/macos/files/Copying.h"
#include "platform/macos/files/Moving.h"
#include "platform/macos/files/Staging.h"
#include "platform/macos/files/VolumeTrash.h"
#include "platform/posix/files/Errors.h"
#include "platform/posix/files/FileContent.h"
#include "platform/posix/files/FileTypes.h"
#include "platform/posix/files/OpenFiles.h"

namespace vantory {

using darwin::AtEnd;
using darwin::ItemStatus;

namespace {

// What a replaced file passes on to its successor, which was changed now.
void keepAttributes(int old, int successor, const std::string& path) {
  ItemStatus status;
  if (darwin::statusOf(old, status) != 0) return;
  (void)!fchown(successor, static_cast<uid_t>(-1), status.group);
  macos::CopyReport ignored;
  (void)macos::copyAttributes(old, status, successor, path, ignored);
  const timespec now[2] = {{0, UTIME_NOW}, {0, UTIME_NOW}};
  futimens(successor, now);
}

}  // namespace

Result<Descriptor> MacFileSystem::openPath(const std::string& path, int flags, mode_t mode) const {
  const Result<Place> place = rights_.locate(path);
  if (!place) return place.error();
  Descriptor opened(uninterrupted(
      [&] { return darwin::openAt(place->at(), place->name.c_str(), flags | rights_.noFollowFlag(), mode); }));
  if (!opened.valid()) return (flags & O_ACCMODE) == O_RDONLY ? macos::openingError(path) : systemError(path);
  return opened;
}

// A regular file, opened without waiting for a FIFO.
Result<Descriptor> MacFileSystem::openFile(const std::string& path, int flags, mode_t mode) const {
  Result<Descriptor> file = openPath(path, flags | O_NONBLOCK, mode);
  if (!file) return file;
  ItemStatus status;
  if (darwin::statusOf(file->get(), status) != 0) return systemError(path);
  if (!S_ISREG(status.mode)) return errorWithText(std::errc::invalid_argument, path, "is no file");
  if (!rights_.mayHandOn(status)) return systemError(path, EPERM);
  return file;
}

// Below its root nothing is reached by a link: a backup may come from anywhere.
Result<Descriptor> MacFileSystem::openCopySource(const CopyRequest& request) const {
  const Result<Place> place = rights_.locate(request.source);
  if (!place) return place.error();
  const std::string& root = request.sourceRoot;
  if (root.empty()) {
    Descriptor source =
        macos::openSource(place->at(), place->name, rights_.isAdministrator() ? Links::DoNotFollow : request.links);
    if (!source.valid()) return macos::openingError(request.source);
    return source;
  }
  if (request.source.size() <= root.size() + 1 || !request.source.starts_with(root) ||
      request.source[root.size()] != '/')
    return errorWithText(std::errc::invalid_argument, request.source, "does not lie in " + root);
  const Result<Descriptor> folder = openPath(root, O_RDONLY | O_DIRECTORY);
  if (!folder) return folder.error();
  Descriptor source = macos::openBeneath(folder->get(), request.source.substr(root.size() + 1), O_RDONLY | O_NONBLOCK);
  if (!source.valid()) return macos::openingError(request.source);
  return source;
}

Result<FileInfo> MacFileSystem::info(const std::string& path, Links links) const {
  const Result<Place> place = rights_.locate(path);
  if (!place) return place.error();
  ItemStatus status;
  if (darwin::statusAt(place->at(), place->name.c_str(), rights_.atEnd(links == Links::Follow), status) != 0)
    return systemError(path);
  FileInfo info;
  info.type = typeOfMode(status.mode);
  info.size = status.size;
  info.modified = {status.modified.tv_sec, static_cast<std::int32_t>(status.modified.tv_nsec)};
  info.identity = {status.device, status.number};
  info.locked = (status.flags & (darwin::kImmutable | darwin::kSystemImmutable)) != 0;
  info.owner = status.owner;
  return info;
}

Result<std::vector<DirectoryEntry>> MacFileSystem::list(const std::string& path, Detail detail) const {
  const Result<Descriptor> folder = openPath(path, O_RDONLY | O_DIRECTORY | O_NONBLOCK);
  if (!folder) return folder.error();
  return macos::readFolder(folder->get(), path, detail);
}

Result<std::string> MacFileSystem::read(const std::string& path) const {
  const Result<Descriptor> file = openFile(path, O_RDONLY);
  if (!file) return file.error();
  std::string bytes;
  char piece[64 * 1024];
  for (;;) {
    const ssize_t count = uninterrupted([&] { return ::read(file->get(), piece, sizeof piece); });
    if (count < 0) return systemError(path);
    if (count == 0) return bytes;
    bytes.append(piece, static_cast<std::size_t>(count));
    if (bytes.size() > kLargestReadBytes)
      return errorWithText(std::errc::file_too_large, path, "is too large to be read");
  }
}

Result<bool> MacFileSystem::haveSameContent(const std::string& path, const std::string& other) const {
  const Result<Descriptor> one = openFile(path, O_RDONLY);
  if (!one) return one.error();
  const Result<Descriptor> two = openFile(other, O_RDONLY);
  if (!two) return two.error();
  return vantory::haveSameContent(one->get(), path, two->get(), other);
}

// The new file is complete, and has what the old one had, before it takes the name. What the drive has been given in
// order is on its medium when the folder is.
Status MacFileSystem::write(const std::string& path, std::string_view bytes, WriteOptions options) {
  Result<Place> place = rights_.locateInFolder(path);
  if (!place) return place.error();
  ItemStatus there;
  if (darwin::statusAt(place->at(), place->name.c_str(), AtEnd::KeepLink, there) == 0 && S_ISDIR(there.mode))
    return systemError(path, EISDIR);
  const bool isInHome = place->isInHome;
  const Descriptor old = macos::openSource(place->at(), place->name, Links::DoNotFollow);
  auto file = macos::HiddenItem::create(std::move(*place), path, macos::HiddenItem::Kind::File, rights_);
  if (!file) return file.error();
  if (const Status written = writeAll(file->get(), bytes, path); !written) return written;
  // What the superuser writes for all is the superuser's, whoever made the file before.
  if (old.valid() && !rights_.isAdministrator()) keepAttributes(old.get(), file->get(), path);
  if (rights_.giveAway(file->get(), isInHome, geteuid(), getegid()) != 0) return systemError(path);
  if (options.durable && darwin::flushInOrder(file->get()) != 0) return systemError(path);
  if (const Status named = file->name(StagedCopy::Existing::Replace); !named) return named;
  if (!options.durable) return {};
  const Result<Descriptor> folder = openPath(paths::parent(path), O_RDONLY | O_DIRECTORY);
  if (folder && darwin::flushDrive(folder->get()) != 0 && errno != EINVAL && !darwin::isUnsupported(errno))
    return systemError(path);
  return {};
}

// A new file is its owner's alone.
Result<std::unique_ptr<AppendFile>> MacFileSystem::openForAppending(const std::string& path) {
  Result<Descriptor> file = openFile(path, O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW, S_IRUSR | S_IWUSR);
  if (!file) return file.error();
  return std::unique_ptr<AppendFile>(std::make_unique<OpenAppendFile>(std::move(*file), path));
}

Result<std::unique_ptr<StagedCopy>> MacFileSystem::stageCopy(const CopyRequest& request) {
  const Result<Descriptor> source = openCopySource(request);
  if (!source) return source.error();
  ItemStatus status;
  if (darwin::statusOf(source->get(), status) != 0) return systemError(request.source);
  if (!S_ISREG(status.mode) && !S_ISDIR(status.mode))
    return errorWithText(std::errc::invalid_argument, request.source, "is neither a file nor a folder");
  if (!rights_.mayHandOn(status)) return systemError(request.source, EPERM);
  Result<Place> destination = rights_.locateInFolder(request.destination);
  if (!destination) return destination.error();
  macos::CopyReport report(request.observer, request.checksum, request.mayBeProgram, rights_, destination->isInHome);
  return macos::stage(*source, status, request, std::move(*destination), report);
}

Status MacFileSystem::copyLink(const std::string& source, const std::string& destination) {
  const Result<Place> from = rights_.locate(source);
  if (!from) return from.error();
  const Result<Place> to = rights_.locate(destination);
  if (!to) return to.error();
  macos::CopyReport report({}, CopyChecksum::Keep, true, rights_, to->isInHome);
  return macos::copyLink(from->at(), from->name, *to, source, report);
}

// Only onto another volume is it a copy, after which the original is removed.
Result<Notes> MacFileSystem::move(const std::string& source, const std::string& destination) {
  const Result<Place> from = rights_.locate(source);
  if (!from) return from.error();
  const Result<Place> to = rights_.locate(destination);
  if (!to) return to.error();
  const Status renamed = macos::renameItem(*from, *to, destination);
  if (renamed) return Notes();
  if (renamed.error().code != std::errc::cross_device_link) return renamed.error();
  return macos::moveByCopying(source, destination, rights_);
}

Status MacFileSystem::remove(const std::string& path) {
  const Result<Place> place = rights_.locate(path);
  if (!place) return place.error();
  return macos::removeItem(place->at(), place->name, path);
}

Status MacFileSystem::makeFolder(const std::string& path) {
  return macos::createFolders(path, rights_);
}

Result<Trashed> MacFileSystem::trash(const std::string& path, const std::string& trashFolder) {
  if (rights_.isAdministrator())
    return errorWithText(std::errc::operation_not_permitted, path, "the Trash takes a user's own items only");
  return macos::putInTrash(path, trashFolder);
}

// One call for all that was written to this volume.
Status MacFileSystem::sync(const std::string& path) {
  const Result<Descriptor> item = openPath(path, O_RDONLY | O_NONBLOCK);
  if (!item) return item.error();
  if (darwin::flushVolume(item->get()) != 0) return systemError(path);
  return {};
}

Result<std::unique_ptr<FolderHold>> MacFileSystem::holdFolder(const std::string& path, std::chrono::milliseconds wait) {
  // A folder of the superuser's could be held by whoever may look into it, a file of that name by the superuser only.
  Result<Descriptor> held = rights_.isAdministrator()
                                ? openPath(path + "/.vantory-hold", O_RDONLY | O_CREAT | O_NONBLOCK, S_IRUSR | S_IWUSR)
                                : openPath(path, O_RDONLY | O_NONBLOCK);
  if (!held) return held.error();
  return holdOpen(std::move(*held), path, wait);
}

}  // namespace vantory
