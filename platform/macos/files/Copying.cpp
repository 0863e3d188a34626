// Clones where the volume can, else reads and writes; then attributes, access list, mode and dates.
#include "platform/macos/files/Copying.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <optional>
#include <string_view>

#include "base/Checksum.h"
#include "platform/Checksums.h"
#include "platform/macos/files/MacChecksums.h"
#include "platform/posix/files/Errors.h"
#include "platform/posix/files/FileContent.h"
#include "platform/posix/files/FileTypes.h"
#include "platform/posix/files/UntrustedMode.h"

namespace vantory::macos {

namespace {

using darwin::AtEnd;
using darwin::ItemStatus;

constexpr int kAttempts = 3;
// Small enough for a slow disk to be done with it soon: between two of them a copy can be ended.
constexpr std::size_t kPieceBytes = 1024 * 1024;
constexpr std::string_view kResourceFork = "com.apple.ResourceFork";
// The system's own, which it sets and refuses as it likes.
constexpr std::array<std::string_view, 3> kSystemAttributes = {"com.apple.provenance", "com.apple.macl",
                                                               "com.apple.rootless"};

constexpr std::string_view kOwnAttributes = "user.vantory.";

// Some clocks move in steps of some milliseconds and some volumes count whole seconds, so a change that follows another
// within a step leaves no trace. A status is good to compare with only when its last change is older than that.
constexpr long kClockStepNanoseconds = 10'000'000;

bool settled(const ItemStatus& status) {
  timespec now;
  clock_gettime(CLOCK_REALTIME, &now);
  const long step = status.changed.tv_nsec == 0 ? 1'000'000'000L : kClockStepNanoseconds;
  const time_t seconds = now.tv_sec - status.changed.tv_sec;
  if (seconds < 0 || seconds > 1) return true;  // a clock that was set back says nothing
  return seconds * 1'000'000'000L + now.tv_nsec - status.changed.tv_nsec > step;
}

// A status to compare with later; waits a moment for one that is not settled.
bool baseline(int source, ItemStatus& status) {
  if (settled(status)) return true;
  const timespec step{status.changed.tv_nsec == 0 ? 1 : 0, kClockStepNanoseconds};
  nanosleep(&step, nullptr);
  return darwin::statusOf(source, status) == 0 && settled(status);
}

// While it lives, this thread's reading fetches what is only in the cloud.
class FetchingFromCloud {
 public:
  explicit FetchingFromCloud(bool wanted) : wanted_(wanted) {
    if (wanted_) darwin::fetchFromCloud(true);
  }
  ~FetchingFromCloud() {
    if (wanted_) darwin::fetchFromCloud(false);
  }
  FetchingFromCloud(const FetchingFromCloud&) = delete;
  FetchingFromCloud& operator=(const FetchingFromCloud&) = delete;

 private:
  const bool wanted_;
};

// The checksum of one copy: made, or that of the source looked at.
class CopiedChecksum {
 public:
  CopiedChecksum(int source, CopyChecksum purpose) : replaces_(purpose != CopyChecksum::Keep) {
    if (purpose == CopyChecksum::Check) expected_ = carriedText(source, kChecksumAttribute);
    if (purpose == CopyChecksum::Make || expected_) checksum_.emplace();
  }

  // Null where none is needed.
  Checksum* get() { return checksum_ ? &*checksum_ : nullptr; }
  // Takes from a clone what its source carries.
  void clear(int clone) const {
    for (const char* name : {kChecksumAttribute, kHeldAttribute})
      if (replaces_) (void)darwin::removeAttribute(clone, name);
  }
  // Where the copy's volume knows no attributes, the copy is as good without.
  Status finish(int copy, const std::string& path, CopyReport& report) const {
    if (!checksum_) return {};
    const std::string text = checksum_->text();
    if (expected_ && *expected_ != text) return damagedCopy(path);
    if (!expected_ && darwin::setAttribute(copy, kChecksumAttribute, text.data(), text.size(), 0) != 0 &&
        !darwin::isUnsupported(errno))
      report.noteOnce(kChecksumAttribute, "No checksum could be noted for the copy of " + systemError(path).text);
    return {};
  }

 private:
  const bool replaces_;
  std::optional<std::string> expected_;
  std::optional<Checksum> checksum_;
};

// A file with hardly anything in it may claim to be larger than any volume: to read it would take years. Nor is a
// volume filled up first with what it cannot take.
bool hasRoom(const ItemStatus& file, int onVolume, std::uint64_t needed) {
  constexpr std::uint64_t kWorthAsking = 64 * 1024 * 1024;
  darwin::Room room;
  if (file.size < kWorthAsking || darwin::roomOf(onVolume, room) != 0 || room.whole == 0) return true;
  return file.size <= room.whole && std::min(file.size, needed) <= room.free;
}

// Zeros become a hole, where the volume knows holes: the system's own word for where they are has been wrong.
bool writePiece(int copy, std::string_view piece) {
  const bool isHole = piece.size() == kPieceBytes && piece.find_first_not_of('\0') == std::string_view::npos;
  if (isHole) return lseek(copy, static_cast<off_t>(piece.size()), SEEK_CUR) >= 0;
  while (!piece.empty()) {
    const ssize_t step = uninterrupted([&] { return write(copy, piece.data(), piece.size()); });
    if (step < 0) return false;
    piece.remove_prefix(static_cast<std::size_t>(step));
  }
  return true;
}

// All bytes from the present positions. `told` counts those that the observer has heard of.
bool copyBytes(int source, int copy, const CopyReport& report, Checksum* checksum, std::int64_t& told) {
  std::string piece(kPieceBytes, '\0');
  for (;;) {
    const ssize_t count = uninterrupted([&] { return read(source, piece.data(), piece.size()); });
    if (count == 0) return ftruncate(copy, lseek(copy, 0, SEEK_CUR)) == 0;  // which may lie behind a hole
    if (count < 0 || !writePiece(copy, {piece.data(), static_cast<std::size_t>(count)})) return false;
    if (checksum) checksum->add({piece.data(), static_cast<std::size_t>(count)});
    told += count;
    if (!report.advance(count, 0)) return false;
  }
}

Error changing(const std::string& path) {
  return errorWithText(std::errc::device_or_resource_busy, path, "it kept changing while it was copied");
}

// The system tells so where fetching is not permitted here.
Error readingError(const std::string& path) {
  return errno == EDEADLK ? errorWithText(std::errc::resource_deadlock_would_occur, path, "is only in the cloud")
                          : systemError(path);
}

bool cannotClone(int error) {
  return darwin::isUnsupported(error) || error == EXDEV || error == EINVAL || error == ENOSYS;
}

// The names of all attributes, each ended by a NUL; none when they cannot be told.
std::optional<std::string> attributeNames(int item) {
  for (;;) {
    const ssize_t length = darwin::attributeNames(item, nullptr, 0);
    if (length < 0) return darwin::isUnsupported(errno) ? std::optional<std::string>("") : std::nullopt;
    std::string names(static_cast<std::size_t>(length), '\0');
    const ssize_t got = length == 0 ? 0 : darwin::attributeNames(item, names.data(), names.size());
    if (got < 0 && errno == ERANGE) continue;  // more of them since
    if (got < 0) return std::nullopt;
    names.resize(static_cast<std::size_t>(got));
    return names;
  }
}

// A resource fork may be large, and alone can be read and written in pieces.
bool copyResourceFork(int source, int copy, const char* name) {
  std::string piece(kPieceBytes, '\0');
  for (std::uint32_t position = 0;;) {
    const ssize_t count = darwin::attribute(source, name, piece.data(), piece.size(), position);
    if (count <= 0) return count == 0;
    if (darwin::setAttribute(copy, name, piece.data(), static_cast<std::size_t>(count), position) != 0) return false;
    position += static_cast<std::uint32_t>(count);
  }
}

// The value may change between the two calls; what there is then is taken.
bool copyAttribute(int source, int copy, const char* name) {
  if (name == kResourceFork) return copyResourceFork(source, copy, name);
  const ssize_t length = darwin::attribute(source, name, nullptr, 0, 0);
  if (length < 0) return false;
  std::string value(static_cast<std::size_t>(length), '\0');
  const ssize_t got = darwin::attribute(source, name, value.data(), value.size(), 0);
  return got >= 0 && darwin::setAttribute(copy, name, value.data(), static_cast<std::size_t>(got), 0) == 0;
}

void copyNamedAttributes(int source, int copy, const std::string& path, CopyReport& report) {
  const auto names = attributeNames(source);
  if (!names) return report.noteOnce("list", "The attributes could not be read of " + systemError(path).text);
  for (std::size_t start = 0; start < names->size(); start = names->find('\0', start) + 1) {
    const char* name = names->c_str() + start;
    const bool isChecksum = std::string_view(name).starts_with(kOwnAttributes);
    if (std::ranges::find(kSystemAttributes, name) != kSystemAttributes.end() ||
        (isChecksum && report.checksum() != CopyChecksum::Keep))
      continue;
    if (!copyAttribute(source, copy, name))
      report.noteOnce(name, "The attribute " + std::string(name) + " could not be kept for " + systemError(path).text);
  }
}

void noteUnless(int result, const char* what, const std::string& path, CopyReport& report) {
  if (result != 0) report.noteOnce(what, std::string(what) + " could not be kept for " + systemError(path).text);
}

// Takes the copy's locks away, which would keep it from its name, and gives it the source's access list instead of what
// it inherited.
Status makeOurs(int source, int copy, const std::string& path, CopyReport& report) {
  ItemStatus status;
  if (darwin::statusOf(copy, status) != 0) return systemError(path);
  if ((status.flags & darwin::kLocks) != 0 && darwin::setFlags(copy, status.flags & ~darwin::kLocks) != 0)
    return systemError(path);
  noteUnless(darwin::copyAccessList(source, copy), "The access list", path, report);
  return {};
}

// Its owner's permission to write is needed for what it carries.
Status sumClone(int source, const ItemStatus& status, int clone, const std::string& path, CopyReport& report) {
  CopiedChecksum checksum(source, report.checksum());
  const bool isReadOnly = report.checksum() != CopyChecksum::Keep && (status.mode & S_IWUSR) == 0;
  if (isReadOnly) (void)fchmod(clone, (status.mode & 0777U) | S_IWUSR);
  checksum.clear(clone);
  if (checksum.get() &&
      !addContent(clone, status.size, *checksum.get(), [&](std::size_t) { return report.advance(0, 0); }))
    return systemError(path);
  Status done = checksum.finish(clone, path, report);
  if (isReadOnly) (void)fchmod(clone, status.mode & 0777U);
  return done;
}

// A new link of the superuser's goes to its owner. In its place may be another item by now, of which nothing is
// changed.
bool giveLinkAway(const Place& link, const ItemStatus& source, const CopyReport& report) {
  if (!report.rights().isAdministrator()) return true;
  const Descriptor opened(darwin::openLink(link.at(), link.name.c_str()));
  ItemStatus made;
  if (!opened.valid() || darwin::statusOf(opened.get(), made) != 0) return false;
  if (S_ISLNK(made.mode) && made.owner == geteuid() && made.names == 1)
    return report.rights().giveAway(opened.get(), report.isInHome(), source.owner, source.group) == 0;
  errno = EPERM;
  return false;
}

// One file of a tree: cloned, or else copied.
Status copyEntry(int folder, const std::string& name, int copyFolder, const std::string& path, CopyReport& report) {
  const Descriptor source = openSource(folder, name, Links::DoNotFollow);
  ItemStatus status;
  if (!source.valid() && errno == ENOENT) {
    report.note(path + " vanished while its folder was copied");
    return {};
  }
  if (!source.valid() || darwin::statusOf(source.get(), status) != 0) return openingError(path);
  if (!S_ISREG(status.mode)) {
    report.note("Left out " + path + ": it is a special file");
    return {};
  }
  if (!report.rights().mayHandOn(status)) return systemError(path, EPERM);
  const Place place{Descriptor(fcntl(copyFolder, F_DUPFD_CLOEXEC, 0)), name};
  if (!place.folder.valid()) return systemError(path);
  const Result<Descriptor> cloned = cloneFile(source.get(), status, place, path, report);
  if (!cloned || cloned->valid()) return cloned.status();
  Descriptor copy(uninterrupted([&] {
    return darwin::openAt(copyFolder, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, S_IRUSR | S_IWUSR);
  }));
  if (!copy.valid()) return systemError(path);
  if (Status copied = copyFile(source.get(), status, copy.get(), path, report); !copied) return copied;
  if (!copy.closeWritten()) return systemError(path);
  return {};
}

// A folder with all that it holds. `root` is the folder that all is copied to.
class TreeCopy {
 public:
  TreeCopy(const ItemStatus& root, CopyReport& report) : root_(root), report_(report) {}

  Status run(int source, int copy, const std::string& path, int depth);

 private:
  Status copySubfolder(int folder, const std::string& name, int copyFolder, const std::string& path, int depth);

  const ItemStatus& root_;
  CopyReport& report_;
};

// The folder's own attributes come last: adding to it changes its dates.
Status TreeCopy::run(int source, int copy, const std::string& path, int depth) {
  const auto entries = readFolder(source, path, Detail::Names);
  if (!entries) return entries.error();
  for (const DirectoryEntry& entry : *entries) {
    const std::string entryPath = path + "/" + entry.name;
    Status copied;
    switch (entry.type) {
      case FileType::File:
        copied = copyEntry(source, entry.name, copy, entryPath, report_);
        break;
      case FileType::Folder:
        copied = copySubfolder(source, entry.name, copy, entryPath, depth + 1);
        break;
      case FileType::SymbolicLink: {
        const Place place{Descriptor(fcntl(copy, F_DUPFD_CLOEXEC, 0)), entry.name};
        copied =
            place.folder.valid() ? copyLink(source, entry.name, place, entryPath, report_) : systemError(entryPath);
        break;
      }
      case FileType::Other:
        report_.note("Left out " + entryPath + ": it is a special file");
        break;
    }
    if (!copied) return copied;
  }
  ItemStatus status;
  if (darwin::statusOf(source, status) != 0) return systemError(path);
  if (Status kept = copyAttributes(source, status, copy, path, report_); !kept) return kept;
  report_.copied(path, status);
  return {};
}

// A folder that vanished is a note; one that cannot be opened ends the copy.
Status TreeCopy::copySubfolder(int folder, const std::string& name, int copyFolder, const std::string& path,
                               int depth) {
  if (depth > kDeepestFolder - 32)  // a backup adds levels of its own, and must be deletable
    return errorWithText(std::errc::filename_too_long, path, "the folder is nested too deeply");
  const Descriptor source(darwin::openAt(folder, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW));
  ItemStatus status;
  if (!source.valid() && errno == ENOENT) {
    report_.note(path + " vanished while its folder was copied");
    return {};
  }
  if (!source.valid() || darwin::statusOf(source.get(), status) != 0) return openingError(path);
  if (isSameItem(status, root_))
    return errorWithText(std::errc::invalid_argument, path, "a folder cannot be copied into itself");
  if (uninterrupted([&] { return darwin::makeFolder(copyFolder, name.c_str()); }) != 0) return systemError(path);
  const Descriptor copy = report_.rights().openNewFolder(copyFolder, name);
  if (!copy.valid()) return systemError(path);
  return run(source.get(), copy.get(), path, depth);
}

}  // namespace

Descriptor openSource(int folder, const std::string& name, Links links) {
  const int flags = O_RDONLY | O_NONBLOCK | (links == Links::Follow ? 0 : O_NOFOLLOW);
  return Descriptor(uninterrupted([&] { return darwin::openAt(folder, name.c_str(), flags); }));
}

// The clone is made at one moment; what is told of the source is of one before.
Result<Descriptor> cloneFile(int source, const ItemStatus& status, const Place& copy, const std::string& path,
                             CopyReport& report) {
  if (!report.mayClone(status)) return Descriptor();
  if (!hasRoom(status, source, 0)) return systemError(path, ENOSPC);
  const char* name = copy.name.c_str();
  if (uninterrupted([&] { return darwin::clone(source, copy.at(), name); }) != 0)
    return cannotClone(errno) ? Result<Descriptor>(Descriptor()) : systemError(path);
  Descriptor cloned(darwin::openAt(copy.at(), name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK));
  Status done = cloned.valid() ? makeOurs(source, cloned.get(), path, report) : systemError(path);
  if (done) done = sumClone(source, status, cloned.get(), path, report);
  if (done && (!report.advance(static_cast<std::int64_t>(status.size), 0) || !report.advance(0, 1)))
    done = systemError(path);
  if (!done) {
    darwin::removeFile(copy.at(), name);
    return done.error();
  }
  report.copied(path, status);
  return cloned;
}

// A copy counts only when the source looked the same before and after it.
Status copyFile(int source, ItemStatus status, int copy, const std::string& path, CopyReport& report) {
  if (!hasRoom(status, copy, status.held)) return systemError(path, ENOSPC);
  const FetchingFromCloud fetching((status.flags & darwin::kOnlyInCloud) != 0);
  CopiedChecksum checksum(source, report.checksum());
  std::int64_t told = 0;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    if (attempt > 0 && (ftruncate(copy, 0) != 0 || lseek(copy, 0, SEEK_SET) < 0 || lseek(source, 0, SEEK_SET) < 0 ||
                        !report.advance(-std::exchange(told, 0), 0)))
      return systemError(path);
    const bool comparable = baseline(source, status);
    if (checksum.get()) checksum.get()->restart();
    if (!copyBytes(source, copy, report, checksum.get(), told)) return readingError(path);
    ItemStatus after;
    if (darwin::statusOf(source, after) != 0) return systemError(path);
    if (comparable && isUnchanged(status, after)) {
      if (Status whole = checksum.finish(copy, path, report); !whole) return whole;
      if (Status kept = copyAttributes(source, after, copy, path, report); !kept) return kept;
      if (!report.advance(0, 1)) return systemError(path);
      report.copied(path, after);
      return {};
    }
    status = after;
  }
  return changing(path);
}

Status copyTree(int source, int copy, const std::string& path, CopyReport& report) {
  ItemStatus root;
  if (darwin::statusOf(copy, root) != 0) return systemError(path);
  return TreeCopy(root, report).run(source, copy, path, 0);
}

Status copyLink(int folder, const std::string& name, const Place& copy, const std::string& path, CopyReport& report) {
  ItemStatus status;
  char target[PATH_MAX];
  if (darwin::statusAt(folder, name.c_str(), AtEnd::KeepLink, status) != 0) return systemError(path);
  const ssize_t length = readlinkat(folder, name.c_str(), target, sizeof target - 1);
  if (length < 0) return systemError(path);
  target[length] = '\0';
  if (uninterrupted([&] { return symlinkat(target, copy.at(), copy.name.c_str()); }) != 0) return systemError(path);
  const timespec times[2] = {status.accessed, status.modified};
  if (!report.rights().isAdministrator()) utimensat(copy.at(), copy.name.c_str(), times, AT_SYMLINK_NOFOLLOW);
  if (!giveLinkAway(copy, status, report) || !report.advance(0, 1)) {
    const Error error = systemError(path);
    darwin::removeFile(copy.at(), copy.name.c_str());
    return error;
  }
  report.copied(path, status);
  return {};
}

// In this order: attributes need write permission, the access list says more than the mode, dates come last.
Status copyAttributes(int source, const ItemStatus& status, int copy, const std::string& path, CopyReport& report) {
  if (report.rights().giveAway(copy, report.isInHome(), status.owner, status.group) != 0) return systemError(path);
  copyNamedAttributes(source, copy, path, report);
  if (report.mayBeProgram()) noteUnless(darwin::copyAccessList(source, copy), "The access list", path, report);
  const mode_t mode = report.mayBeProgram() ? status.mode & 0777U : untrustedMode(status.mode);
  noteUnless(fchmod(copy, mode), "The mode", path, report);
  (void)darwin::setCreated(copy, status.created);
  const timespec times[2] = {status.accessed, status.modified};
  noteUnless(futimens(copy, times), "The dates", path, report);
  return {};
}

}  // namespace vantory::macos
