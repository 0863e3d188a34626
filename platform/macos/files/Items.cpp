// Walks, lists, renames and empties folders.
#include "platform/macos/files/Items.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>

#include "base/Paths.h"
#include "platform/posix/files/Errors.h"
#include "platform/posix/files/FileTypes.h"

namespace vantory::macos {

namespace {

using darwin::AtEnd;
using darwin::ItemStatus;

constexpr int kFolder = O_RDONLY | O_DIRECTORY | O_NOFOLLOW;

// An entry that vanished meanwhile is left out.
Status addEntry(std::vector<DirectoryEntry>& entries, int folder, const dirent& read, Detail detail,
                const std::string& path) {
  DirectoryEntry entry{read.d_name, typeOfEntry(read.d_type), 0};
  if (detail == Detail::Sizes || read.d_type == DT_UNKNOWN) {
    ItemStatus status;
    if (darwin::statusAt(folder, read.d_name, AtEnd::KeepLink, status) != 0)
      return errno == ENOENT ? Status() : systemError(path + "/" + entry.name);
    entry.type = typeOfMode(status.mode);
    entry.size = status.size;
  }
  entries.push_back(std::move(entry));
  return {};
}

// One that exists is success, whoever made it in between.
Status createFolder(const std::string& path, const Rights& rights) {
  const Result<Place> place = rights.locate(path);
  if (!place) return place.error();
  const char* name = place->name.c_str();
  if (uninterrupted([&] { return darwin::makeFolder(place->at(), name); }) == 0) {
    const Descriptor made = rights.openNewFolder(place->at(), place->name);
    if (!made.valid() || darwin::dropAccessList(made.get()) != 0) return systemError(path);
    if (rights.isAdministrator() && fchmod(made.get(), rights.folderMode(place->isInHome)) != 0)
      return systemError(path);
    return rights.giveAway(made.get(), place->isInHome, geteuid(), getegid()) == 0 ? Status() : systemError(path);
  }
  if (errno != EEXIST) return systemError(path);
  ItemStatus status;
  if (darwin::statusAt(place->at(), name, rights.atEnd(true), status) != 0) return systemError(path);
  if (!S_ISDIR(status.mode)) return systemError(path, ENOTDIR);
  return {};
}

// Whether its mode keeps its owner out; the superuser needs no permission.
bool isClosed(mode_t mode) {
  return geteuid() != 0 && (mode & S_IRWXU) != S_IRWXU;
}

bool openUp(int folder, const std::string& name, mode_t mode) {
  return fchmodat(folder, name.c_str(), (mode & 07777U) | S_IRWXU, AT_SYMLINK_NOFOLLOW) == 0;
}

Status removeFolder(int parent, const std::string& name, const std::string& path, const ItemStatus& found, int depth,
                    const RemovalCheck& check);

Status removeEntry(int folder, const std::string& name, const std::string& path, std::uint64_t device, int depth,
                   const RemovalCheck& check) {
  if (check)
    if (Status allowed = check(folder, name, path); !allowed) return allowed;
  ItemStatus status;
  if (darwin::statusAt(folder, name.c_str(), AtEnd::KeepLink, status) != 0)
    return errno == ENOENT && depth > 0 ? Status() : systemError(path);
  if (S_ISDIR(status.mode)) {
    if (depth > 0 && status.device != device)
      return errorWithText(std::errc::cross_device_link, path, "another file system is mounted here");
    return removeFolder(folder, name, path, status, depth, check);
  }
  const int removed = uninterrupted([&] { return darwin::removeFile(folder, name.c_str()); });
  return removed == 0 || (errno == ENOENT && depth > 0) ? Status() : systemError(path);
}

// Whether its owner is who we are, its mode gives us the right, and no such flag forbids it: what is refused then takes
// a person's consent.
bool isOpenToUs(int folder, const std::string& name, mode_t right, std::uint32_t forbidding) {
  ItemStatus status;
  if (darwin::statusAt(folder, name.c_str(), AtEnd::FollowLink, status) != 0) return errno == EPERM;
  const bool isOurs = geteuid() == 0 || (status.owner == geteuid() && (status.mode & right) == right);
  return isOurs && (status.flags & forbidding) == 0;
}

bool isFolderOpenToUs(const Place& item) {
  const std::string folder = item.folder.valid() ? "." : paths::parent(item.name);
  return isOpenToUs(item.at(), folder, S_IWUSR, darwin::kForbidding);
}

Error consentError(const std::string& path, const char* what) {
  return {.code = std::errc::operation_not_permitted,
          .text = path + ": macOS does not let this program " + what,
          .cure =
              "Allow the program that Vantory is started from, such as Terminal, or for scheduled backups vantory "
              "itself: System Settings > Privacy & Security > Full Disk Access.",
          .consentMissing = true};
}

// What could not be removed gets its mode back.
Status removeFolder(int parent, const std::string& name, const std::string& path, const ItemStatus& found, int depth,
                    const RemovalCheck& check) {
  if (depth > kDeepestFolder)
    return errorWithText(std::errc::filename_too_long, path, "the folder is nested too deeply");
  if ((found.flags & darwin::kLocks) != 0) return systemError(path, EPERM);
  if (isClosed(found.mode)) openUp(parent, name, found.mode);
  const Descriptor folder(uninterrupted([&] { return darwin::openAt(parent, name.c_str(), kFolder); }));
  ItemStatus opened;
  if (!folder.valid() || darwin::statusOf(folder.get(), opened) != 0) return systemError(path);
  if (!isSameItem(opened, found)) return systemError(path, EAGAIN);
  const auto entries = readFolder(folder.get(), path, Detail::Names);
  Status removed = entries ? Status() : entries.error();
  for (std::size_t i = 0; removed && i < entries->size(); ++i) {
    const std::string& entry = (*entries)[i].name;
    removed = removeEntry(folder.get(), entry, paths::join(path, entry), found.device, depth + 1, check);
  }
  if (removed && uninterrupted([&] { return darwin::removeFolder(parent, name.c_str()); }) != 0)
    removed = systemError(path);
  if (!removed && isClosed(found.mode)) fchmod(folder.get(), found.mode & 07777U);
  return removed;
}

}  // namespace

Error openingError(const std::string& path) {
  Error refused = systemError(path);
  return refused.code == std::errc::operation_not_permitted && isOpenToUs(AT_FDCWD, path, S_IRUSR, 0)
             ? consentError(path, "see it")
             : refused;
}

Descriptor openBeneath(int folder, const std::string& relative, int flags) {
  Descriptor above;
  std::size_t start = 0;
  for (std::size_t end = 0; (end = relative.find('/', start)) != std::string::npos; start = end + 1) {
    const std::string name = relative.substr(start, end - start);
    if (name.empty() || name == ".") continue;
    if (name == "..") {
      errno = EINVAL;
      return {};
    }
    above = Descriptor(darwin::openAt(above.valid() ? above.get() : folder, name.c_str(), kFolder));
    if (!above.valid()) return {};
  }
  const std::string last = relative.substr(start);
  if (last.empty() || last == "..") {
    errno = EINVAL;
    return {};
  }
  return Descriptor(darwin::openAt(above.valid() ? above.get() : folder, last.c_str(), flags | O_NOFOLLOW));
}

// Read to its end before anything in it is changed.
Result<std::vector<DirectoryEntry>> readFolder(int folder, const std::string& path, Detail detail) {
  const int twin = fcntl(folder, F_DUPFD_CLOEXEC, 0);
  DIR* const stream = twin < 0 ? nullptr : fdopendir(twin);
  if (!stream) {
    const Error error = systemError(path);
    if (twin >= 0) close(twin);
    return error;
  }
  const std::unique_ptr<DIR, int (*)(DIR*)> closing(stream, closedir);
  rewinddir(stream);
  std::vector<DirectoryEntry> entries;
  for (errno = 0; const dirent* entry = readdir(stream); errno = 0) {
    if (isSelfOrParent(entry->d_name)) continue;
    if (const Status added = addEntry(entries, folder, *entry, detail, path); !added) return added.error();
  }
  if (errno != 0) return systemError(path);
  return entries;
}

// From below: as a rule only the last one is missing.
Status createFolders(const std::string& path, const Rights& rights) {
  Status made = createFolder(path, rights);
  if (made || made.error().code != std::errc::no_such_file_or_directory) return made;
  const std::string parent = paths::parent(path);
  if (parent.empty() || parent == "/") return made;
  if (Status above = createFolders(parent, rights); !above) return above;
  return createFolder(path, rights);
}

Place twinOf(const Place& place) {
  if (!place.folder.valid()) return {Descriptor(), place.name, place.isInHome};
  return {Descriptor(fcntl(place.folder.get(), F_DUPFD_CLOEXEC, 0)), place.name, place.isInHome};
}

int renameKeeping(int fromFolder, const std::string& from, int toFolder, const std::string& to) {
  const int renamed =
      uninterrupted([&] { return darwin::renameExclusively(fromFolder, from.c_str(), toFolder, to.c_str()); });
  if (renamed == 0 || !darwin::isUnsupported(errno)) return renamed;
  ItemStatus status;
  if (darwin::statusAt(toFolder, to.c_str(), AtEnd::KeepLink, status) == 0) {
    errno = EEXIST;
    return -1;
  }
  return errno == ENOENT ? darwin::renameOver(fromFolder, from.c_str(), toFolder, to.c_str()) : -1;
}

// A folder's own write permission is needed to move it to another, because its ".." changes.
Status renameItem(const Place& from, const Place& to, const std::string& path) {
  const auto rename = [&] { return renameKeeping(from.at(), from.name, to.at(), to.name); };
  if (rename() == 0) return {};
  const Error refused = systemError(path);
  if (refused.code == std::errc::operation_not_permitted && isFolderOpenToUs(from) && isFolderOpenToUs(to) &&
      isOpenToUs(from.at(), from.name, 0, darwin::kForbidding))
    return consentError(from.name, "move it");
  ItemStatus status;
  if (refused.code != std::errc::permission_denied || geteuid() == 0 ||
      darwin::statusAt(from.at(), from.name.c_str(), AtEnd::KeepLink, status) != 0 || !S_ISDIR(status.mode) ||
      (status.mode & S_IWUSR) != 0 || !openUp(from.at(), from.name, status.mode))
    return refused;
  const bool renamed = rename() == 0;
  const Error error = systemError(path);
  const Place& now = renamed ? to : from;
  (void)!fchmodat(now.at(), now.name.c_str(), status.mode & 07777U, AT_SYMLINK_NOFOLLOW);
  return renamed ? Status() : error;
}

Status removeItem(int folder, const std::string& name, const std::string& path, const RemovalCheck& check) {
  return removeEntry(folder, name, path, 0, 0, check);
}

}  // namespace vantory::macos
