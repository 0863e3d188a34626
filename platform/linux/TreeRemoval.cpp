#include "platform/linux/TreeRemoval.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <memory>
#include <vector>

#include "platform/linux/Descriptor.h"
#include "platform/linux/Errors.h"
#include "platform/linux/FolderReading.h"

namespace vantory {
namespace {

Status removeContents(Descriptor folder, const std::string& path, dev_t device, int depth);

Status removeFolder(int parent, const std::string& name, const std::string& path, dev_t device, int depth) {
  if (depth > kDeepestFolder)
    return errorWithText(std::errc::filename_too_long, path, "the folder is nested too deeply");
  Descriptor folder(openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!folder.valid() && errno == EACCES) {
    // A read-only folder of our own: open it up on its descriptor.
    Descriptor closed(openat(parent, name.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (closed.valid() && openUp(closed.get()))
      folder = Descriptor(openat(closed.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  }
  if (!folder.valid()) return systemError(path);
  if (const Status removed = removeContents(std::move(folder), path, device, depth); !removed) return removed;
  if (unlinkat(parent, name.c_str(), AT_REMOVEDIR) != 0) return systemError(path);
  return {};
}

Status removeContents(Descriptor folder, const std::string& path, dev_t device, int depth) {
  struct stat status;
  if (fstat(folder.get(), &status) != 0) return systemError(path);
  if (status.st_dev != device)
    return errorWithText(std::errc::cross_device_link, path, "another file system is mounted here");
  if ((status.st_mode & S_IRWXU) != S_IRWXU) openUp(folder.get());
  auto entries = readFolder(folder.get(), path, Detail::Names);
  if (!entries) return entries.error();
  for (const DirectoryEntry& entry : *entries) {
    const std::string entryPath = path + "/" + entry.name;
    if (entry.type == FileType::Folder) {
      if (const Status removed = removeFolder(folder.get(), entry.name, entryPath, device, depth + 1); !removed)
        return removed;
    } else if (unlinkat(folder.get(), entry.name.c_str(), 0) != 0 && errno != ENOENT) {
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
