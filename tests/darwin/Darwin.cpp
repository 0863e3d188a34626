// Answers the calls of macOS by those of Linux. Flags and access lists are kept in attributes, and a locked item is
// defended here instead of by the kernel; attributes bear the names that they would have on a Mac behind "user.".
#include "platform/macos/darwin/Darwin.h"

#include <fcntl.h>
#include <linux/stat.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string_view>

#include "platform/macos/darwin/Authorization.h"
#include "platform/posix/files/Descriptor.h"
#include "tests/darwin/Volume.h"

namespace vantory::darwin {

namespace {

constexpr const char* kFlags = "user.darwin.flags";
constexpr const char* kAccessList = "user.darwin.list";
// An item that the privacy settings keep from this program.
constexpr const char* kGuarded = "user.darwin.guarded";
// What a folder passes on to the items that are made in it.
constexpr const char* kInheritedList = "user.darwin.inherited";
constexpr std::string_view kOwnAttributes = "user.darwin.";
constexpr std::string_view kPrefix = "user.";

int fail(int error) {
  errno = error;
  return -1;
}

std::string prefixed(const char* name) {
  return std::string(kPrefix) + name;
}

// A path of the item that calls with paths take; they know attributes, of links too.
std::string wayTo(int folder, const char* name) {
  if (folder == AT_FDCWD || *name == '/') return name;
  return "/proc/self/fd/" + std::to_string(folder) + "/" + name;
}

std::string wayTo(int item) {
  return "/proc/self/fd/" + std::to_string(item);
}

// ASCII in one case, and letters with a diaeresis taken apart.
std::string inOneForm(std::string_view name) {
  std::string form;
  for (std::size_t i = 0; i < name.size(); ++i) {
    const std::string_view two = name.substr(i, 2);
    const std::string_view letters = "aeiou";
    const std::string_view composed[] = {"\u00e4", "\u00eb", "\u00ef", "\u00f6", "\u00fc"};
    const auto* const found = std::ranges::find(composed, two);
    if (found == std::end(composed)) {
      form += static_cast<char>(std::tolower(static_cast<unsigned char>(name[i])));
      continue;
    }
    form.append(1, letters[static_cast<std::size_t>(found - composed)]).append("\u0308");
    ++i;
  }
  return form;
}

// The name as it is kept: each part of a path that is not there is looked for in its folder.
std::string asKept(int folder, const char* name) {
  namespace fs = std::filesystem;
  if (!volume().findsAnyForm) return name;
  fs::path kept = *name == '/' ? "/" : "";
  for (const fs::path& part : fs::path(name).relative_path()) {
    const std::string above = wayTo(folder, kept.empty() ? "." : kept.c_str());
    fs::path next = kept / part;
    if (faccessat(folder, next.c_str(), F_OK, AT_SYMLINK_NOFOLLOW) != 0)
      for (std::error_code failure; const fs::directory_entry& entry : fs::directory_iterator(above, failure))
        if (inOneForm(entry.path().filename().native()) == inOneForm(part.native()))
          next = kept / entry.path().filename();
    kept = next;
  }
  return kept;
}

std::uint32_t flagsOf(const std::string& path) {
  std::uint32_t flags = 0;
  return lgetxattr(path.c_str(), kFlags, &flags, sizeof flags) == sizeof flags ? flags : 0;
}

std::uint32_t flagsOf(int item) {
  std::uint32_t flags = 0;
  return fgetxattr(item, kFlags, &flags, sizeof flags) == sizeof flags ? flags : 0;
}

bool isLocked(int folder, const char* name) {
  return (flagsOf(wayTo(folder, name)) & kLocks) != 0;
}

// Nothing can be added to a locked folder, nor taken from it.
bool isLockedFolder(int folder, const char* name) {
  const char* slash = std::strrchr(name, '/');
  if (folder != AT_FDCWD && !slash) return (flagsOf(folder) & kLocks) != 0;
  return slash && slash != name && (flagsOf(wayTo(folder, std::string(name, slash).c_str())) & kLocks) != 0;
}

// Nothing can be taken from a folder that is kept from this program.
bool isGuardedFolder(int folder, const char* name) {
  const char* slash = std::strrchr(name, '/');
  const std::string above = slash ? wayTo(folder, std::string(name, slash).c_str()) : wayTo(folder, ".");
  return getxattr(above.c_str(), kGuarded, nullptr, 0) >= 0;
}

bool mayNotChange(int folder, const char* name) {
  return isLocked(folder, name) || isLockedFolder(folder, name);
}

void inherit(int folder, const char* name, int made) {
  const char* slash = std::strrchr(name, '/');
  const std::string above = slash ? wayTo(folder, std::string(name, slash).c_str()) : wayTo(folder, ".");
  char list[256];
  const ssize_t length = getxattr(above.c_str(), kInheritedList, list, sizeof list);
  if (length >= 0) fsetxattr(made, kAccessList, list, static_cast<std::size_t>(length), 0);
}

int setFlagsOf(const std::string& path, std::uint32_t flags) {
  const int set = flags == 0 ? removexattr(path.c_str(), kFlags) : setxattr(path.c_str(), kFlags, &flags, 4, 0);
  return set == 0 || errno == ENODATA ? 0 : -1;
}

void assign(ItemStatus& status, const struct statx& found) {
  const auto time = [](const statx_timestamp& stamp) {
    return timespec{static_cast<time_t>(stamp.tv_sec), static_cast<long>(stamp.tv_nsec)};
  };
  status.device = (static_cast<std::uint64_t>(found.stx_dev_major) << 32) | found.stx_dev_minor;
  status.number = found.stx_ino;
  status.mode = found.stx_mode;
  status.owner = found.stx_uid;
  status.group = found.stx_gid;
  status.size = found.stx_size;
  status.accessed = time(found.stx_atime);
  status.modified = time(found.stx_mtime);
  status.changed = time(found.stx_ctime);
  status.created = time(found.stx_btime);
  status.held = found.stx_blocks * 512;
  status.names = found.stx_nlink;
}

// All attributes but those that this emulation keeps of flags and lists.
void copyAttributes(int source, int copy) {
  char names[4096];
  const ssize_t length = flistxattr(source, names, sizeof names);
  for (const char* name = names; name < names + length; name += std::strlen(name) + 1) {
    if (std::string_view(name).starts_with(kAccessList)) continue;
    char value[65536];
    const ssize_t size = fgetxattr(source, name, value, sizeof value);
    if (size >= 0) fsetxattr(copy, name, value, static_cast<std::size_t>(size), 0);
  }
}

// With its holes, as blocks that are shared have them.
bool copyContent(int source, int copy, off_t size) {
  char piece[65536];
  for (off_t position = 0; (position = lseek(source, position, SEEK_DATA)) >= 0;) {
    const ssize_t count = pread(source, piece, sizeof piece, position);
    if (count <= 0) return count == 0;
    const ssize_t written = pwrite(copy, piece, static_cast<std::size_t>(count), position);
    if (written < 0) return false;
    position += written;
  }
  return errno == ENXIO && ftruncate(copy, size) == 0;
}

}  // namespace

Volume& volume() {
  static Volume theVolume;
  return theVolume;
}

int statusOf(int item, ItemStatus& status) {
  struct statx found;
  if (statx(item, "", AT_EMPTY_PATH, STATX_BASIC_STATS | STATX_BTIME, &found) != 0) return -1;
  assign(status, found);
  status.flags = flagsOf(item);
  return 0;
}

int statusAt(int folder, const char* asked, AtEnd link, ItemStatus& status) {
  const std::string itsName = asKept(folder, asked);
  const char* const name = itsName.c_str();
  struct statx found;
  const int flags = link == AtEnd::KeepLink ? AT_SYMLINK_NOFOLLOW : 0;
  if (statx(folder, name, flags, STATX_BASIC_STATS | STATX_BTIME, &found) != 0) return -1;
  assign(status, found);
  std::uint32_t kept = 0;
  const std::string path = wayTo(folder, name);
  const ssize_t size = link == AtEnd::KeepLink ? lgetxattr(path.c_str(), kFlags, &kept, sizeof kept)
                                               : getxattr(path.c_str(), kFlags, &kept, sizeof kept);
  status.flags = size == sizeof kept ? kept : 0;
  return 0;
}

int openAt(int folder, const char* asked, int flags, mode_t mode) {
  const std::string itsName = asKept(folder, asked);
  const char* const name = itsName.c_str();
  const bool writes = (flags & O_ACCMODE) != O_RDONLY;
  if (writes && (flags & O_EXCL) == 0 && isLocked(folder, name)) return fail(EPERM);
  if (!writes && lgetxattr(wayTo(folder, name).c_str(), kGuarded, nullptr, 0) >= 0) return fail(EPERM);
  const bool makes = (flags & O_CREAT) != 0 && faccessat(folder, name, F_OK, AT_SYMLINK_NOFOLLOW) != 0;
  if (makes && isLockedFolder(folder, name)) return fail(EPERM);
  const int opened = ::openat(folder, name, flags | O_CLOEXEC | O_NOCTTY, mode);
  if (opened >= 0 && makes) inherit(folder, name, opened);
  return opened;
}

int openNewHeld(int folder, const char* name) {
  if (!volume().locksFiles) return fail(ENOTSUP);
  const int made = openAt(folder, name, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW, S_IRUSR | S_IWUSR);
  if (made >= 0) flock(made, LOCK_EX | LOCK_NB);
  return made;
}

int makeFolder(int folder, const char* name) {
  if (isLockedFolder(folder, name)) return fail(EPERM);
  if (mkdirat(folder, name, S_IRWXU) != 0) return -1;
  const Descriptor made(::openat(folder, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  inherit(folder, name, made.get());
  return 0;
}

int openLink(int folder, const char* name) {
  return ::openat(folder, name, O_PATH | O_NOFOLLOW | O_CLOEXEC);
}

int setOwner(int item, uid_t owner, gid_t group) {
  return fchownat(item, "", owner, group, AT_EMPTY_PATH);
}

int renameExclusively(int fromFolder, const char* from, int toFolder, const char* to) {
  if (!volume().renamesExclusively) return fail(ENOTSUP);
  if (mayNotChange(fromFolder, from) || isLockedFolder(toFolder, to) || isGuardedFolder(fromFolder, from))
    return fail(EPERM);
  return renameat2(fromFolder, from, toFolder, to, RENAME_NOREPLACE);
}

int renameOver(int fromFolder, const char* from, int toFolder, const char* to) {
  if (mayNotChange(fromFolder, from) || mayNotChange(toFolder, to)) return fail(EPERM);
  return renameat(fromFolder, from, toFolder, to);
}

int exchange(int oneFolder, const char* one, int otherFolder, const char* other) {
  if (!volume().exchanges) return fail(ENOTSUP);
  if (mayNotChange(oneFolder, one) || mayNotChange(otherFolder, other)) return fail(EPERM);
  return renameat2(oneFolder, one, otherFolder, other, RENAME_EXCHANGE);
}

int removeFile(int folder, const char* name) {
  if (mayNotChange(folder, name)) return fail(EPERM);
  const int removed = unlinkat(folder, name, 0);
  return removed != 0 && errno == EISDIR ? fail(EPERM) : removed;
}

int removeFolder(int folder, const char* name) {
  return mayNotChange(folder, name) ? fail(EPERM) : unlinkat(folder, name, AT_REMOVEDIR);
}

// With the flags of the source, and with the list that new items inherit.
int clone(int source, int folder, const char* name) {
  struct stat found;
  if (!volume().clones) return fail(ENOTSUP);
  if (isLockedFolder(folder, name)) return fail(EPERM);
  if (fstat(source, &found) != 0) return -1;
  const Descriptor made(::openat(folder, name, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
  struct stat beside;
  if (!made.valid()) return -1;
  if (fstat(made.get(), &beside) != 0 || beside.st_dev != found.st_dev) {
    unlinkat(folder, name, 0);
    return fail(EXDEV);
  }
  inherit(folder, name, made.get());
  const timespec times[2] = {found.st_atim, found.st_mtim};
  if (!copyContent(source, made.get(), found.st_size)) {
    const int error = errno;
    unlinkat(folder, name, 0);
    return fail(error);
  }
  copyAttributes(source, made.get());
  fchmod(made.get(), found.st_mode & 0777U);
  return futimens(made.get(), times);
}

int setFlags(int item, std::uint32_t flags) {
  return setFlagsOf(wayTo(item), flags);
}

int setFlagsAt(int folder, const char* name, std::uint32_t flags) {
  return setFlagsOf(wayTo(folder, name), flags);
}

int setCreated(int, timespec) {
  return fail(ENOTSUP);  // Linux gives nobody that date
}

int flushInOrder(int file) {
  volume().flushes.emplace_back("order");
  return fdatasync(file);
}

int flushDrive(int item) {
  volume().flushes.emplace_back("drive");
  return fsync(item);
}

int flushVolume(int item) {
  volume().flushes.emplace_back("volume");
  return syncfs(item);
}

ssize_t attributeNames(int item, char* names, std::size_t size) {
  char found[4096];
  const ssize_t length = flistxattr(item, found, sizeof found);
  if (length < 0) return length;
  std::string shown;
  for (const char* name = found; name < found + length; name += std::strlen(name) + 1)
    if (const std::string_view text(name); text.starts_with(kPrefix) && !text.starts_with(kOwnAttributes))
      shown.append(text.substr(kPrefix.size())).push_back('\0');
  if (names && shown.size() > size) return fail(ERANGE);
  if (names) std::memcpy(names, shown.data(), shown.size());
  return static_cast<ssize_t>(shown.size());
}

ssize_t attribute(int item, const char* name, void* value, std::size_t size, std::uint32_t position) {
  if (position == 0 && (!value || std::strcmp(name, "com.apple.ResourceFork") != 0))
    return fgetxattr(item, prefixed(name).c_str(), value, size);
  char all[65536];
  const ssize_t length = fgetxattr(item, prefixed(name).c_str(), all, sizeof all);
  if (length < 0 || length <= static_cast<ssize_t>(position)) return length < 0 ? length : 0;
  const std::size_t part = std::min(size, static_cast<std::size_t>(length) - position);
  std::memcpy(value, all + position, part);
  return static_cast<ssize_t>(part);
}

int setAttribute(int item, const char* name, const void* value, std::size_t size, std::uint32_t position) {
  char all[65536];
  const ssize_t before = position == 0 ? 0 : fgetxattr(item, prefixed(name).c_str(), all, sizeof all);
  if (before < 0 || position + size > sizeof all) return fail(EINVAL);
  std::memcpy(all + position, value, size);
  return fsetxattr(item, prefixed(name).c_str(), all, position + size, 0);
}

int removeAttribute(int item, const char* name) {
  return fremovexattr(item, prefixed(name).c_str());
}

ssize_t attributeAt(const char* path, const char* name, void* value, std::size_t size) {
  return lgetxattr(path, prefixed(name).c_str(), value, size);
}

int setAttributeAt(const char* path, const char* name, const void* value, std::size_t size) {
  return lsetxattr(path, prefixed(name).c_str(), value, size, 0);
}

int removeAttributeAt(const char* path, const char* name) {
  return lremovexattr(path, prefixed(name).c_str());
}

int copyAccessList(int from, int to) {
  char list[256];
  const ssize_t length = fgetxattr(from, kAccessList, list, sizeof list);
  return length < 0 ? dropAccessList(to) : fsetxattr(to, kAccessList, list, static_cast<std::size_t>(length), 0);
}

int dropAccessList(int item) {
  return fremovexattr(item, kAccessList) == 0 || errno == ENODATA || errno == EOPNOTSUPP ? 0 : -1;
}

bool listGrants(int item) {
  return fgetxattr(item, kAccessList, nullptr, 0) >= 0;
}

// The folder above which another device lies.
int roomOf(int item, Room& room) {
  struct statvfs disk;
  if (fstatvfs(item, &disk) != 0) return -1;
  room = {disk.f_blocks * disk.f_frsize, disk.f_bfree * disk.f_frsize};
  return 0;
}

std::string volumeOf(int folder, const std::string& name) {
  char real[PATH_MAX];
  struct stat item;
  struct stat above;
  const std::string start = wayTo(folder, name.c_str());
  if (lstat(start.c_str(), &item) != 0 || !realpath(start.substr(0, start.rfind('/') + 1).c_str(), real)) return {};
  std::string path = real;
  while (path != "/") {
    const std::string parent = path.substr(0, std::max<std::size_t>(path.rfind('/'), 1));
    if (stat(parent.c_str(), &above) != 0 || above.st_dev != item.st_dev) break;
    path = parent;
  }
  return path;
}

void fetchFromCloud(bool) {}

std::optional<uid_t> consoleOwner() {
  const char* owner = std::getenv("VANTORY_TEST_CONSOLE");
  if (!owner) return std::nullopt;
  return static_cast<uid_t>(std::strtoul(owner, nullptr, 10));
}

std::optional<uid_t> userBehind(int socket) {
  ucred peer{};
  socklen_t size = sizeof peer;
  if (getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) return std::nullopt;
  return peer.uid;
}

// Those of this machine.
std::vector<RunningProgram> programsOf(uid_t user) {
  namespace fs = std::filesystem;
  std::error_code failure;
  std::vector<RunningProgram> programs;
  for (const fs::directory_entry& entry : fs::directory_iterator("/proc")) {
    struct stat owner;
    const pid_t process = std::atoi(entry.path().filename().c_str());
    if (process <= 0 || stat(entry.path().c_str(), &owner) != 0 || owner.st_uid != user) continue;
    const fs::path program = fs::read_symlink(entry.path() / "exe", failure);
    if (!failure) programs.push_back({process, program});
  }
  return programs;
}

// Only what a test puts there stands in for a tool.
std::string toolPath(const std::string& path) {
  const char* standIns = std::getenv("VANTORY_TEST_TOOLS");
  return (standIns ? standIns : "/nonexistent") + path;
}

bool keepOnlyFileWork() {
  return true;
}

const AuthorizationCalls* authorizationCalls() {
  return volume().authorization;
}

bool hasMessagePort(const std::string& name) {
  return volume().ports.contains(name);
}

}  // namespace vantory::darwin
