#include "platform/linux/files/Folders.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <memory>
#include <vector>

#include "platform/linux/files/FolderReading.h"
#include "platform/posix/files/Descriptor.h"
#include "platform/posix/files/Errors.h"

namespace vantory {
namespace {

Status removeContents(int folder, const std::string& path, dev_t device, int depth);

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

Status removeFolder(int parent, const std::string& name, const std::string& path, dev_t device, int depth) {
  if (depth > kDeepestFolder)
    return errorWithText(std::errc::filename_too_long, path, "the folder is nested too deeply");
  struct stat found;
  const Descriptor folder = openToEmpty(parent, name, found);
  if (!folder.valid()) return systemError(path);
  Status removed = found.st_dev == device
                       ? removeContents(folder.get(), path, device, depth)
                       : errorWithText(std::errc::cross_device_link, path, "another file system is mounted here");
  if (removed && uninterrupted([&] { return unlinkat(parent, name.c_str(), AT_REMOVEDIR); }) != 0)
    removed = systemError(path);
  if (!removed && isClosed(found)) fchmod(folder.get(), found.st_mode & 07777U);
  return removed;
}

Status removeContents(int folder, const std::string& path, dev_t device, int depth) {
  auto entries = readFolder(folder, path, Detail::Names);
  if (!entries) return entries.error();
  for (const DirectoryEntry& entry : *entries) {
    const std::string entryPath = path + "/" + entry.name;
    if (entry.type == FileType::Folder) {
      if (const Status removed = removeFolder(folder, entry.name, entryPath, device, depth + 1); !removed)
        return removed;
    } else if (uninterrupted([&] { return unlinkat(folder, entry.name.c_str(), 0); }) != 0 && errno != ENOENT) {
      return systemError(entryPath);
    }
  }
  return {};
}

}  // namespace

Status removeItem(int folder, const std::string& name, const std::string& path) {
  if (uninterrupted([&] { return unlinkat(folder, name.c_str(), 0); }) == 0) return {};
  if (errno != EISDIR) return systemError(path);
  struct stat status;
  if (fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return systemError(path);
  return removeFolder(folder, name, path, status.st_dev, 0);
}

}  // namespace vantory
