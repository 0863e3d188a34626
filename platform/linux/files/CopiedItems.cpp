// Compares what was copied with what is there now.
#include "platform/linux/files/CopiedItems.h"

#include <fcntl.h>
#include <linux/stat.h>

#include "platform/linux/files/Folders.h"
#include "platform/posix/files/Descriptor.h"
#include "platform/posix/files/Errors.h"
#include "platform/posix/files/FileTypes.h"
#include "platform/posix/files/MoveErrors.h"

namespace vantory {
namespace {

bool sameTime(const timespec& left, const timespec& right) {
  return left.tv_sec == right.tv_sec && left.tv_nsec == right.tv_nsec;
}

bool isSameItem(const struct stat& left, const struct stat& right) {
  return left.st_dev == right.st_dev && left.st_ino == right.st_ino;
}

// Neither an immutable item nor one that only takes additions can be removed.
bool isLocked(int folder, const std::string& name) {
  struct statx status;
  return statx(folder, name.c_str(), AT_SYMLINK_NOFOLLOW, STATX_TYPE, &status) == 0 &&
         (status.stx_attributes & (STATX_ATTR_IMMUTABLE | STATX_ATTR_APPEND)) != 0;
}

}  // namespace

bool isUnchanged(const struct stat& before, const struct stat& after) {
  return before.st_size == after.st_size && sameTime(before.st_mtim, after.st_mtim) &&
         sameTime(before.st_ctim, after.st_ctim);
}

Status CopiedItems::isSame(int folder, const std::string& name, const std::string& path) const {
  struct stat now;
  if (fstatat(folder, name.c_str(), &now, AT_SYMLINK_NOFOLLOW) != 0) return systemError(path);
  const auto copied = items_.find(path);
  if (copied == items_.end()) return notCopied(path, typeOfMode(now.st_mode));
  const struct stat& before = copied->second;
  const bool isFolder = S_ISDIR(now.st_mode);
  if (!isSameItem(before, now) ||
      (!isFolder && (before.st_size != now.st_size || !sameTime(before.st_mtim, now.st_mtim))))
    return changedWhileMoved(path);
  return {};
}

Status CopiedItems::lookAgain(int folder, const std::string& name, const std::string& path) const {
  return lookAt(folder, name, path, 0);
}

Status CopiedItems::lookAt(int folder, const std::string& name, const std::string& path, int depth) const {
  if (depth > kDeepestFolder)
    return errorWithText(std::errc::filename_too_long, path, "the folder is nested too deeply");
  struct stat now;
  if (fstatat(folder, name.c_str(), &now, AT_SYMLINK_NOFOLLOW) != 0) return systemError(path);
  const auto copied = items_.find(path);
  if (copied == items_.end()) return notCopied(path, typeOfMode(now.st_mode));
  if (!isSameItem(copied->second, now) || !isUnchanged(copied->second, now)) return changedWhileMoved(path);
  if (isLocked(folder, name)) return systemError(path, EPERM);
  if (!S_ISDIR(now.st_mode)) return {};

  const Descriptor opened(openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!opened.valid()) return systemError(path);
  const auto entries = readFolder(opened.get(), path, Detail::Names);
  if (!entries) return entries.error();
  for (const DirectoryEntry& entry : *entries)
    if (Status same = lookAt(opened.get(), entry.name, path + "/" + entry.name, depth + 1); !same) return same;
  return {};
}

}  // namespace vantory
