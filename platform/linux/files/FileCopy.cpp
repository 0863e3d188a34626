// Copies content, attributes, access lists, mode, owner and times between descriptors.
#include "platform/linux/files/FileCopy.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/statvfs.h>
#include <sys/xattr.h>

#include <algorithm>
#include <climits>
#include <ctime>
#include <memory>
#include <optional>
#include <string_view>

#include "base/Checksum.h"
#include "platform/Checksums.h"
#include "platform/linux/files/CarriedChecksum.h"
#include "platform/linux/files/FileRights.h"
#include "platform/posix/files/Errors.h"
#include "platform/posix/files/FileContent.h"
#include "platform/posix/files/UntrustedMode.h"

namespace vantory {
namespace {

constexpr std::size_t kBufferBytes = 256 * 1024;
constexpr blkcnt_t kBlockBytes = 512;  // as the kernel counts them
constexpr off_t kRangeBytes = 64 * 1024 * 1024;
// Small enough for a slow disk to be done with it soon: between two of them a copy can be ended.
constexpr off_t kObservedRangeBytes = 1024 * 1024;
// Attributes of the program's own; they tell of the file that carries them.
constexpr std::string_view kOwnAttributes = "user.vantory.";
constexpr const char* kAccessList = "system.posix_acl_access";
constexpr const char* kDefaultAccessList = "system.posix_acl_default";

// The kernel stamps changes with a clock that moves in steps of some milliseconds, so a change that follows another
// within a step leaves no trace. A status is good to compare with only when its last change is older than that.
constexpr long kClockStepNanoseconds = 10'000'000;

bool settled(const struct stat& status) {
  timespec now;
  clock_gettime(CLOCK_REALTIME, &now);
  const time_t seconds = now.tv_sec - status.st_ctim.tv_sec;
  if (seconds < 0 || seconds > 1) return true;  // a clock that was set back says nothing
  return seconds * 1'000'000'000L + now.tv_nsec - status.st_ctim.tv_nsec > kClockStepNanoseconds;
}

// A status to compare with later; waits a moment for one that is not settled.
bool baseline(int source, struct stat& status) {
  if (settled(status)) return true;
  const timespec step{0, kClockStepNanoseconds};
  nanosleep(&step, nullptr);
  return fstat(source, &status) == 0 && settled(status);
}

// How far the copy of one file is.
class FileProgress {
 public:
  explicit FileProgress(const CopyReport& report) : report_(report) {}

  off_t rangeBytes() const { return report_.isObserved() ? kObservedRangeBytes : kRangeBytes; }
  // False, with errno, when the copy is to end.
  bool advance(off_t bytes) {
    told_ += bytes;
    return report_.advance(bytes, 0);
  }
  bool startAgain() { return advance(-told_); }
  bool finish() const { return report_.advance(0, 1); }

 private:
  const CopyReport& report_;
  off_t told_ = 0;
};

// All of `length` bytes from the present positions, by reading and writing. Fewer when the source ends early. What is
// written is added to the checksum where there is one.
bool copyThroughBuffer(int source, int copy, off_t length, FileProgress& progress, Checksum* checksum = nullptr) {
  const auto buffer = std::make_unique_for_overwrite<char[]>(std::min<std::size_t>(length, kBufferBytes));
  while (length > 0) {
    const auto wanted = static_cast<std::size_t>(std::min<off_t>(length, kBufferBytes));
    const ssize_t count = uninterrupted([&] { return read(source, buffer.get(), wanted); });
    if (count < 0) return false;
    if (count == 0) return true;
    for (ssize_t written = 0; written < count;) {
      const ssize_t step =
          uninterrupted([&] { return write(copy, buffer.get() + written, static_cast<std::size_t>(count - written)); });
      if (step < 0) return false;
      written += step;
    }
    if (checksum) checksum->add({buffer.get(), static_cast<std::size_t>(count)});
    if (!progress.advance(count)) return false;
    length -= count;
  }
  return true;
}

// Errors of copy_file_range() that say nothing about the files.
bool kernelCannotCopy() {
  return errno == EXDEV || errno == EOPNOTSUPP || errno == EINVAL || errno == ENOSYS || errno == EBADF ||
         errno == ETXTBSY;
}

// The kernel copies by itself where it can, and shares the blocks where the file system can; for a checksum the bytes
// have to pass through here.
bool copyBytes(int source, int copy, off_t length, FileProgress& progress, Checksum* checksum) {
  if (checksum) return copyThroughBuffer(source, copy, length, progress, checksum);
  while (length > 0) {
    const auto wanted = static_cast<std::size_t>(std::min(length, progress.rangeBytes()));
    const ssize_t count = uninterrupted([&] { return copy_file_range(source, nullptr, copy, nullptr, wanted, 0); });
    if (count < 0) return kernelCannotCopy() && copyThroughBuffer(source, copy, length, progress);
    // Some file systems answer nothing for files that only seem empty to the kernel.
    if (count == 0) return copyThroughBuffer(source, copy, length, progress);
    if (!progress.advance(count)) return false;
    length -= count;
  }
  return true;
}

// A hole reads as zeros.
bool passHole(off_t length, FileProgress& progress, Checksum* checksum) {
  if (!checksum) return progress.advance(length);
  static constexpr char kZeros[kBufferBytes] = {};
  while (length > 0) {
    const off_t step = std::min<off_t>(length, kBufferBytes);
    checksum->add({kZeros, static_cast<std::size_t>(step)});
    if (!progress.advance(step)) return false;
    length -= step;
  }
  return true;
}

// Copies the parts that hold data and leaves the holes between them.
bool copySparse(int source, int copy, off_t size, FileProgress& progress, Checksum* checksum) {
  off_t position = 0;
  while (position < size) {
    const off_t data = lseek(source, position, SEEK_DATA);
    if (data < 0 && errno == ENXIO) break;
    if (data < 0) return position == 0 && errno == EINVAL && copyBytes(source, copy, size, progress, checksum);
    const off_t hole = lseek(source, data, SEEK_HOLE);
    if (hole < 0 || lseek(source, data, SEEK_SET) < 0 || lseek(copy, data, SEEK_SET) < 0) return false;
    if (!passHole(data - position, progress, checksum) || !copyBytes(source, copy, hole - data, progress, checksum))
      return false;
    position = hole;
  }
  return passHole(size - position, progress, checksum) && ftruncate(copy, size) == 0;
}

// Asked of the first file of a copy only, where the file system cannot do that.
bool shareBlocks(int source, const struct stat& status, int copy, CopyReport& report) {
  if (status.st_size == 0 || !report.mayShareBlocks()) return false;
  if (ioctl(copy, FICLONE, source) == 0) return true;
  if (errno == EOPNOTSUPP || errno == ENOTTY || errno == EXDEV) report.cannotShareBlocks();
  return false;
}

// A file with hardly anything in it may claim to be larger than any disk: to read it would take years. Nor is a disk
// filled up first with what it cannot take.
bool hasRoom(int source, const struct stat& status, int copy, CopyReport& report) {
  constexpr off_t kWorthAsking = 64 * 1024 * 1024;
  struct statvfs disk;
  if (status.st_size < kWorthAsking || fstatvfs(copy, &disk) != 0 || disk.f_blocks == 0) return true;
  const auto size = static_cast<std::uint64_t>(status.st_size);
  const auto held = static_cast<std::uint64_t>(status.st_blocks) * kBlockBytes;
  if (size > disk.f_blocks * disk.f_frsize) return false;
  return std::min(size, held) <= disk.f_bfree * disk.f_frsize || shareBlocks(source, status, copy, report);
}

// A file with fewer blocks than its size needs has holes. A file system that shares blocks does so for a checksum too:
// then that is read from the copy.
bool copyContentOnce(int source, const struct stat& status, int copy, FileProgress& progress, Checksum* checksum,
                     CopyReport& report) {
  if (checksum) checksum->restart();
  if (checksum && shareBlocks(source, status, copy, report))
    return addContent(copy, static_cast<std::uint64_t>(status.st_size), *checksum,
                      [&](std::size_t bytes) { return progress.advance(static_cast<off_t>(bytes)); });
  if (status.st_size > 0 && status.st_blocks * kBlockBytes < status.st_size)
    return copySparse(source, copy, status.st_size, progress, checksum);
  return copyBytes(source, copy, status.st_size, progress, checksum);
}

// Those of the user, and access lists: all others belong to the system.
bool isKept(std::string_view attribute) {
  return attribute.substr(0, 5) == "user." || attribute == kAccessList || attribute == kDefaultAccessList;
}

// The names of all extended attributes, each ended by a NUL; none when they cannot be told.
std::optional<std::string> attributeNames(int file) {
  char few[1024];
  ssize_t length = flistxattr(file, few, sizeof few);
  if (length >= 0) return std::string(few, static_cast<std::size_t>(length));
  if (errno == EOPNOTSUPP) return "";
  if (errno != ERANGE) return std::nullopt;
  std::string many(static_cast<std::size_t>(XATTR_LIST_MAX), '\0');
  length = flistxattr(file, many.data(), many.size());
  if (length < 0) return std::nullopt;
  many.resize(static_cast<std::size_t>(length));
  return many;
}

// The value may change between the two calls; what there is then is taken.
bool copyAttribute(int source, int copy, const char* name) {
  const ssize_t length = fgetxattr(source, name, nullptr, 0);
  if (length < 0) return false;
  std::string value(static_cast<std::size_t>(length), '\0');
  const ssize_t got = fgetxattr(source, name, value.data(), value.size());
  return got >= 0 && fsetxattr(copy, name, value.data(), static_cast<std::size_t>(got), 0) == 0;
}

enum class Which { All, Foreign, AccessLists };

bool isMeant(std::string_view attribute, Which which) {
  if (attribute.starts_with("system.")) return which == Which::AccessLists && isKept(attribute);
  return isKept(attribute) &&
         (which == Which::All || (which == Which::Foreign && !attribute.starts_with(kOwnAttributes)));
}

void copyNamedAttributes(int source, int copy, const std::string& names, Which which, const std::string& path,
                         CopyReport& report) {
  for (std::size_t start = 0; start < names.size(); start = names.find('\0', start) + 1) {
    const char* name = names.c_str() + start;
    if (!isMeant(name, which)) continue;
    if (!copyAttribute(source, copy, name))
      report.noteOnce(name, "The attribute " + std::string(name) + " could not be kept for " + systemError(path).text);
  }
}

// Asking first is cheaper: removing writes to the file system's journal even where there is nothing to remove.
bool dropAccessList(int item, const char* name) {
  if (fgetxattr(item, name, nullptr, 0) >= 0) return fremovexattr(item, name) == 0;
  return errno == ENODATA || errno == EOPNOTSUPP;
}

// The checksum of one copy: made, or that of the source looked at.
class CopiedChecksum {
 public:
  CopiedChecksum(int source, CopyChecksum purpose) {
    if (purpose == CopyChecksum::Check) expected_ = carriedText(source, kChecksumAttribute);
    if (purpose == CopyChecksum::Make || expected_) checksum_.emplace();
  }

  // Null where none is needed.
  Checksum* get() { return checksum_ ? &*checksum_ : nullptr; }

  // Where the copy's file system knows no attributes, the copy is as good without.
  Status finish(int copy, const std::string& path, CopyReport& report) const {
    if (!checksum_) return {};
    const std::string text = checksum_->text();
    if (expected_ && *expected_ != text) return damagedCopy(path);
    if (!expected_ && !carryText(copy, kChecksumAttribute, text) && errno != EOPNOTSUPP)
      report.noteOnce(kChecksumAttribute, "No checksum could be noted for the copy of " + systemError(path).text);
    return {};
  }

 private:
  std::optional<std::string> expected_;
  std::optional<Checksum> checksum_;
};

// Of the two disks the one that is full is the copy's.
Error copyError(const std::string& path, const std::string& destination) {
  return systemError(errno == ENOSPC || errno == EDQUOT ? destination : path);
}

// The mode or the times: a file system without owners or dates of its own refuses them, and the content matters more.
bool cannotHold() {
  return errno == EPERM || errno == EOPNOTSUPP || errno == ENOSYS;
}

}  // namespace

bool dropInherited(int item) {
  struct stat status;
  if (fstat(item, &status) != 0) return false;
  return dropAccessList(item, kAccessList) && (!S_ISDIR(status.st_mode) || dropAccessList(item, kDefaultAccessList));
}

ItemLook lookOf(const struct stat& status) {
  return {.device = status.st_dev,
          .number = status.st_ino,
          .mode = status.st_mode,
          .size = static_cast<std::uint64_t>(status.st_size),
          .modified = status.st_mtim,
          .changed = status.st_ctim};
}

Descriptor openSource(int folder, const char* name, int followFlag) {
  return Descriptor(
      uninterrupted([&] { return openat(folder, name, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC | followFlag); }));
}

// A copy counts only when the source looked the same before and after it.
Status copyFileContent(int source, struct stat status, int copy, const std::string& path,
                       const std::string& destination, const CopyManner& manner, CopyReport& report) {
  constexpr int kAttempts = 3;
  if (!hasRoom(source, status, copy, report)) return systemError(destination, ENOSPC);
  FileProgress progress(report);
  CopiedChecksum checksum(source, manner.checksum);
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    if (attempt > 0 && (ftruncate(copy, 0) != 0 || lseek(copy, 0, SEEK_SET) < 0 || lseek(source, 0, SEEK_SET) < 0 ||
                        !progress.startAgain()))
      return copyError(path, destination);
    const bool comparable = baseline(source, status);
    if (!copyContentOnce(source, status, copy, progress, checksum.get(), report)) return copyError(path, destination);
    struct stat after;
    if (fstat(source, &after) != 0) return systemError(path);
    if (comparable && isUnchanged(lookOf(status), lookOf(after))) {
      Status copied = checksum.finish(copy, path, report);
      if (copied) copied = copyAttributes(source, status, copy, path, destination, manner, report);
      if (copied && !progress.finish()) return systemError(path);
      if (copied) report.copied(path, lookOf(status));
      return copied;
    }
    status = after;
  }
  return errorWithText(std::errc::device_or_resource_busy, path, "it kept changing while it was copied");
}

Status copyLink(int folder, const char* name, int copyFolder, const char* copyName, const std::string& path,
                const std::string& destination, const FileRights& rights, CopyReport& report) {
  struct stat status;
  char target[PATH_MAX];
  if (fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) != 0) return systemError(path);
  const ssize_t length = readlinkat(folder, name, target, sizeof target - 1);
  if (length < 0) return systemError(path);
  target[length] = '\0';
  if (uninterrupted([&] { return symlinkat(target, copyFolder, copyName); }) != 0) return systemError(path);
  // A link that stayed the superuser's would count as a way to be trusted.
  Status done = rights.giveAway(copyFolder, copyName, destination, status.st_uid, status.st_gid);
  const timespec times[2] = {status.st_atim, status.st_mtim};
  utimensat(copyFolder, copyName, times, AT_SYMLINK_NOFOLLOW);
  if (done && !report.advance(0, 1)) done = systemError(path);
  if (done)
    report.copied(path, lookOf(status));
  else
    unlinkat(copyFolder, copyName, 0);
  return done;
}

Status copyAttributes(int source, const struct stat& status, int copy, const std::string& path,
                      const std::string& destination, const CopyManner& manner, CopyReport& report) {
  const FileRights& rights = manner.rights;
  if (Status given = rights.giveAway(copy, destination, status.st_uid, status.st_gid); !given) return given;
  // In this order: plain attributes need write permission, an access list says more than the mode, times come last.
  const auto listed = attributeNames(source);
  if (!listed) report.noteOnce("list", "The attributes could not be read of " + systemError(path).text);
  const std::string names = listed.value_or("");
  copyNamedAttributes(source, copy, names, manner.checksum == CopyChecksum::Keep ? Which::All : Which::Foreign, path,
                      report);
  const mode_t mode = manner.mayBeProgram ? status.st_mode : untrustedMode(status.st_mode);
  if (uninterrupted([&] { return fchmod(copy, rights.permittedMode(mode)); }) != 0) {
    if (!cannotHold()) return systemError(path);
    report.noteOnce("mode", "The mode could not be kept for " + systemError(path).text);
  }
  if (manner.mayBeProgram) copyNamedAttributes(source, copy, names, Which::AccessLists, path, report);
  const timespec times[2] = {status.st_atim, status.st_mtim};
  if (uninterrupted([&] { return futimens(copy, times); }) != 0) {
    if (!cannotHold()) return systemError(path);
    report.noteOnce("times", "The times could not be kept for " + systemError(path).text);
  }
  return {};
}

}  // namespace vantory
