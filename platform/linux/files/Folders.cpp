// Makes, lists and empties folders on descriptors.
#include "platform/linux/files/Folders.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/fsuid.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <memory>
#include <vector>

#include "base/Paths.h"
#include "platform/linux/files/FileRights.h"
#include "platform/posix/files/Descriptor.h"
#include "platform/posix/files/Errors.h"
#include "platform/posix/files/FileTypes.h"

namespace vantory {

namespace {

// One that exists is success, whoever made it in between.
Status createFolder(const std::string& path, const FileRights& rights) {
  Result<Place> place = rights.locate(path);
  if (!place) return place.error();
  const char* name = place->name.c_str();
  if (uninterrupted([&] { return mkdirat(place->at(), name, S_IRWXU); }) == 0) {
    if (!rights.isAdministrator()) return {};
    const Descriptor made = rights.openNewFolder(place->at(), place->name);
    if (!made.valid() || fchmod(made.get(), rights.folderMode(path)) != 0) return systemError(path);
    return rights.giveAway(made.get(), path, getuid(), getgid());
  }
  if (errno != EEXIST) return systemError(path);
  struct stat status;
  if (fstatat(place->at(), name, &status, rights.isAdministrator() ? AT_SYMLINK_NOFOLLOW : 0) != 0)
    return systemError(path);
  if (!S_ISDIR(status.st_mode)) return systemError(path, ENOTDIR);
  return {};
}

// An entry as the kernel hands it out; the name follows, ended by a NUL.
struct KernelEntry {
  std::uint64_t number;
  std::int64_t position;
  std::uint16_t length;
  std::uint8_t type;
  char name[1];
};

// Adds the entry, with what the kernel did not tell asked for where it is wanted. One that vanished meanwhile is left
// out.
Status addEntry(std::vector<DirectoryEntry>& entries, int folder, const KernelEntry& read, Detail detail,
                const std::string& path) {
  DirectoryEntry entry{read.name, typeOfEntry(read.type), 0};
  if (detail == Detail::Sizes || read.type == DT_UNKNOWN) {
    struct stat status;
    if (fstatat(folder, read.name, &status, AT_SYMLINK_NOFOLLOW) != 0)
      return errno == ENOENT ? Status() : systemError(path + "/" + entry.name);
    entry.type = typeOfMode(status.st_mode);
    entry.size = static_cast<std::uint64_t>(status.st_size);
  }
  entries.push_back(std::move(entry));
  return {};
}

Status removeContents(int folder, const std::string& path, dev_t device, int depth, const RemovalCheck& check);

// Whether its owner lacks a right to it.
bool isClosed(const struct stat& status) {
  return (status.st_mode & S_IRWXU) != S_IRWXU;
}

// Opens a folder that is to be emptied; one of our own that its mode closes is opened up on its descriptor. `found` is
// its status before that.
Descriptor openToEmpty(int parent, const std::string& name, struct stat& found) {
  Descriptor folder(
      uninterrupted([&] { return openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC); }));
  if (folder.valid()) {
    if (fstat(folder.get(), &found) != 0) return {};
    if (isClosed(found)) openUp(folder.get());
    return folder;
  }
  if (errno != EACCES) return {};
  const Descriptor closed(openat(parent, name.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!closed.valid() || fstat(closed.get(), &found) != 0) return {};
  if (!openUp(closed.get())) {
    errno = EACCES;
    return {};
  }
  return Descriptor(openat(closed.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

// What could not be removed gets its mode back.
Status removeFolder(int parent, const std::string& name, const std::string& path, dev_t device, int depth,
                    const RemovalCheck& check) {
  if (depth > kDeepestFolder)
    return errorWithText(std::errc::filename_too_long, path, "the folder is nested too deeply");
  struct stat found;
  const Descriptor folder = openToEmpty(parent, name, found);
  if (!folder.valid()) return systemError(path);
  Status removed = found.st_dev == device
                       ? removeContents(folder.get(), path, device, depth, check)
                       : errorWithText(std::errc::cross_device_link, path, "another file system is mounted here");
  if (removed && uninterrupted([&] { return unlinkat(parent, name.c_str(), AT_REMOVEDIR); }) != 0)
    removed = systemError(path);
  if (!removed && isClosed(found)) fchmod(folder.get(), found.st_mode & 07777U);
  return removed;
}

Status removeContents(int folder, const std::string& path, dev_t device, int depth, const RemovalCheck& check) {
  auto entries = readFolder(folder, path, Detail::Names);
  if (!entries) return entries.error();
  for (const DirectoryEntry& entry : *entries) {
    const std::string entryPath = path + "/" + entry.name;
    if (check)
      if (Status allowed = check(folder, entry.name, entryPath); !allowed) return allowed;
    if (entry.type == FileType::Folder) {
      if (const Status removed = removeFolder(folder, entry.name, entryPath, device, depth + 1, check); !removed)
        return removed;
    } else if (uninterrupted([&] { return unlinkat(folder, entry.name.c_str(), 0); }) != 0 && errno != ENOENT) {
      return systemError(entryPath);
    }
  }
  return {};
}

}  // namespace

// From below: as a rule only the last one is missing.
Status createFolders(const std::string& path, const FileRights& rights) {
  Status made = createFolder(path, rights);
  if (made || made.error().code != std::errc::no_such_file_or_directory) return made;
  const std::string parent = paths::parent(path);
  if (parent.empty() || parent == "/") return made;
  if (Status above = createFolders(parent, rights); !above) return above;
  return createFolder(path, rights);
}

// By the kernel's own call: the C library's costs four more calls and an allocation for each folder.
Result<std::vector<DirectoryEntry>> readFolder(int folder, const std::string& path, Detail detail) {
  if (lseek(folder, 0, SEEK_SET) != 0) return systemError(path);
  std::vector<DirectoryEntry> entries;
  alignas(KernelEntry) char buffer[16 * 1024];
  for (;;) {
    const long bytes = uninterrupted([&] { return syscall(SYS_getdents64, folder, buffer, sizeof buffer); });
    if (bytes < 0) return systemError(path);
    if (bytes == 0) return entries;
    for (long offset = 0; offset < bytes;) {
      const auto* read = reinterpret_cast<const KernelEntry*>(buffer + offset);
      offset += read->length;
      if (isSelfOrParent(read->name)) continue;
      if (const Status added = addEntry(entries, folder, *read, detail, path); !added) return added.error();
    }
  }
}

bool openUp(int folder) {
  struct stat status;
  if (fstat(folder, &status) != 0) return false;
  if (status.st_uid != static_cast<uid_t>(setfsuid(static_cast<uid_t>(-1)))) return false;
  // fchmod() refuses O_PATH descriptors; their name below /proc does not.
  const std::string name = "/proc/self/fd/" + std::to_string(folder);
  return chmod(name.c_str(), (status.st_mode & 07777U) | S_IRWXU) == 0;
}

Status removeItem(int folder, const std::string& name, const std::string& path, const RemovalCheck& check) {
  if (check)
    if (Status allowed = check(folder, name, path); !allowed) return allowed;
  if (uninterrupted([&] { return unlinkat(folder, name.c_str(), 0); }) == 0) return {};
  if (errno != EISDIR) return systemError(path);
  struct stat status;
  if (fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return systemError(path);
  return removeFolder(folder, name, path, status.st_dev, 0, check);
}

}  // namespace vantory
