#include "platform/linux/FolderReading.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/fsuid.h>
#include <sys/stat.h>

#include <cstring>
#include <memory>

#include "platform/linux/Descriptor.h"
#include "platform/linux/Errors.h"

namespace vantory {
namespace {

struct CloseFolder {
  void operator()(DIR* stream) const { closedir(stream); }
};

FileType typeOf(unsigned char kind) {
  switch (kind) {
    case DT_REG:
      return FileType::File;
    case DT_DIR:
      return FileType::Folder;
    case DT_LNK:
      return FileType::SymbolicLink;
    default:
      return FileType::Other;
  }
}

FileType typeOfMode(mode_t mode) {
  return S_ISREG(mode)   ? FileType::File
         : S_ISDIR(mode) ? FileType::Folder
         : S_ISLNK(mode) ? FileType::SymbolicLink
                         : FileType::Other;
}

bool isSelfOrParent(const char* name) {
  return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0;
}

}  // namespace

Result<std::vector<DirectoryEntry>> readFolder(int folder, const std::string& path, Detail detail) {
  Descriptor own(openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!own.valid()) return systemError(path);
  return readFolder(std::move(own), path, detail);
}

Result<std::vector<DirectoryEntry>> readFolder(Descriptor folder, const std::string& path, Detail detail) {
  const std::unique_ptr<DIR, CloseFolder> stream(fdopendir(folder.get()));
  if (!stream) return systemError(path);
  const int number = folder.release();

  std::vector<DirectoryEntry> entries;
  for (;;) {
    errno = 0;
    const dirent* entry = readdir(stream.get());
    if (!entry) break;
    if (isSelfOrParent(entry->d_name)) continue;
    DirectoryEntry& added = entries.emplace_back(DirectoryEntry{entry->d_name, typeOf(entry->d_type), 0});
    if (detail == Detail::Names && entry->d_type != DT_UNKNOWN) continue;
    struct stat status;
    if (fstatat(number, entry->d_name, &status, AT_SYMLINK_NOFOLLOW) != 0) continue;
    added.type = typeOfMode(status.st_mode);
    added.size = static_cast<std::uint64_t>(status.st_size);
  }
  if (errno != 0) return systemError(path);
  return entries;
}

bool openUp(int folder) {
  struct stat status;
  if (fstat(folder, &status) != 0) return false;
  if (status.st_uid != static_cast<uid_t>(setfsuid(static_cast<uid_t>(-1)))) return false;
  // fchmod() refuses O_PATH descriptors; their name below /proc does not.
  const std::string name = "/proc/self/fd/" + std::to_string(folder);
  return chmod(name.c_str(), (status.st_mode & 07777U) | S_IRWXU) == 0;
}

}  // namespace vantory
