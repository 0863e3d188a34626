// The steps of a move by copying, on Linux.
#include "platform/linux/files/Moving.h"

#include <fcntl.h>
#include <linux/stat.h>
#include <sys/sysmacros.h>

#include "platform/linux/files/FileCopy.h"
#include "platform/linux/files/Folders.h"
#include "platform/linux/files/Staging.h"
#include "platform/posix/files/Errors.h"
#include "platform/posix/files/Moving.h"

namespace vantory {
namespace {

timespec timeOf(const statx_timestamp& time) {
  return {time.tv_sec, static_cast<long>(time.tv_nsec)};
}

class LinuxMovingCalls : public MovingCalls {
 public:
  LinuxMovingCalls(const std::string& source, const std::string& destination, const FileRights& rights)
      : source_(source), destination_(destination), rights_(rights) {}

  // Neither an immutable item nor one that only takes additions can be removed.
  int look(int folder, const std::string& name, ItemLook& look) const override {
    struct statx status;
    if (statx(folder, name.c_str(), AT_SYMLINK_NOFOLLOW, STATX_BASIC_STATS, &status) != 0) return -1;
    look = {.device = makedev(status.stx_dev_major, status.stx_dev_minor),
            .number = status.stx_ino,
            .mode = status.stx_mode,
            .size = status.stx_size,
            .modified = timeOf(status.stx_mtime),
            .changed = timeOf(status.stx_ctime),
            .isLocked = (status.stx_attributes & (STATX_ATTR_IMMUTABLE | STATX_ATTR_APPEND)) != 0};
    return 0;
  }
  Descriptor openFolder(int folder, const std::string& name) const override {
    return Descriptor(openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  }
  Result<std::vector<DirectoryEntry>> entries(int folder, const std::string& path) const override {
    return readFolder(folder, path, Detail::Names);
  }
  int renameKeeping(int folder, const std::string& from, const std::string& to) const override {
    return vantory::renameKeeping(folder, from.c_str(), folder, to.c_str());
  }
  Status remove(int folder, const std::string& name, const std::string& path,
                const RemovalCheck& check) const override {
    return removeItem(folder, name, path, check);
  }
  // By the folder, or where that may not be read by the copy in it.
  Status sync(const Place& item, const std::string& path) const override {
    Descriptor opened(openat(item.at(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!opened.valid()) opened = openSource(item.at(), item.name.c_str(), O_NOFOLLOW);
    if (!opened.valid() || syncfs(opened.get()) != 0) return systemError(path);
    return {};
  }
  Result<Notes> copy(const Place& from, const Place& to, const ItemLook& item, CopiedItems& items) const override {
    CopyReport report(items);
    if (!S_ISLNK(item.mode)) return stageAndName(from, to, report);
    if (Status copied =
            copyLink(from.at(), from.name.c_str(), to.at(), to.name.c_str(), source_, destination_, rights_, report);
        !copied)
      return copied.error();
    return report.takeNotes();
  }

 private:
  Result<Notes> stageAndName(const Place& from, const Place& to, CopyReport& report) const;

  const std::string& source_;
  const std::string& destination_;
  const FileRights& rights_;
};

Result<Notes> LinuxMovingCalls::stageAndName(const Place& from, const Place& to, CopyReport& report) const {
  Descriptor source = openSource(from.at(), from.name.c_str(), O_NOFOLLOW);
  struct stat status;
  if (!source.valid() || fstat(source.get(), &status) != 0) return systemError(source_);
  if (!S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode))
    return errorWithText(std::errc::not_supported, source_, "a special file cannot be moved to another disk");
  if (!rights_.mayCopy(status)) return systemError(source_, EPERM);
  Place place{Descriptor(fcntl(to.at(), F_DUPFD_CLOEXEC, 0)), to.name};
  if (!place.folder.valid()) return systemError(destination_);
  const CopyRequest request{.source = source_, .destination = destination_};
  auto staged = S_ISDIR(status.st_mode) ? stageFolder(std::move(source), request, std::move(place), rights_, report)
                                        : stageFile(source, status, request, std::move(place), rights_, report);
  if (!staged) return staged.error();
  if (Status named = (*staged)->commit(StagedCopy::Existing::Keep); !named) return named.error();
  return (*staged)->notes();
}

}  // namespace

Result<Notes> moveByCopying(const Place& from, const Place& to, const std::string& source,
                            const std::string& destination, const FileRights& rights) {
  Result<Place> original = openFolderOf(from, source);
  if (!original) return original.error();
  Result<Place> copy = openFolderOf(to, destination);
  if (!copy) return copy.error();
  return moveByCopying(LinuxMovingCalls(source, destination, rights), *original, *copy, source, destination);
}

}  // namespace vantory
