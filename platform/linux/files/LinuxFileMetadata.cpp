// Asks the kernel for flags, times and labels, and sets them.
#include "platform/linux/files/LinuxFileMetadata.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <string_view>

#include "base/Paths.h"
#include "base/Text.h"
#include "platform/linux/locks/ImmutableFlag.h"
#include "platform/linux/locks/LockProtocol.h"
#include "platform/posix/files/Errors.h"
#include "platform/posix/processes/PasswordDatabase.h"

namespace vantory {
namespace {

// What a Mac's file manager notes of a file, such as its type and creator.
constexpr const char* kFinderInfo = "user.com.apple.FinderInfo";
constexpr std::size_t kFinderInfoBytes = 32;

// Folders that a Mac shows as one file.
constexpr std::array<std::string_view, 13> kPackageExtensions = {
    "app",        "appex", "bundle", "fcpbundle", "framework", "imovielibrary", "kext",
    "mdimporter", "pkg",   "plugin", "prefpane",  "vnt",       "vnt2"};

// Whether the superuser may change an item's flag or times for the user. With the user's rights a link of the user's
// may have led anywhere, so only what is the user's own counts; administrator rights come by a trusted way, but must
// not reach a file through a second name.
bool mayBeChanged(const struct stat& status, const FileRights& rights) {
  if (status.st_uid == rights.fileOwner()) return true;
  return rights.isAdministrator() && (S_ISDIR(status.st_mode) || status.st_nlink == 1);
}

constexpr const char* kAdministratorCan = "An administrator can do it with chattr.";

std::string homeOfUser() {
  const auto user = databaseUser(getuid());
  return user && !user->home.empty() ? user->home : "which is none";
}

// The path of an open item as it is once every link on its way has been followed.
std::string wayWithoutLinks(int item, const std::string& path) {
  char way[PATH_MAX];
  const std::string link = "/proc/self/fd/" + std::to_string(item);
  const ssize_t length = readlink(link.c_str(), way, sizeof way);
  return length > 0 && length < PATH_MAX ? std::string(way, static_cast<std::size_t>(length)) : path;
}

}  // namespace

Result<Descriptor> LinuxFileMetadata::openItem(const std::string& path) const {
  const FileRights::Scope scope(rights_);
  Result<Place> place = rights_.locate(path);
  if (!place) return place.error();
  Descriptor item(uninterrupted([&] {
    return openat(place->at(), place->name.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC);
  }));
  if (!item.valid()) return systemError(path);
  return item;
}

// Opened with the user's rights, changed with the process's own: only those may set the flag. Where they may not
// either, but the helper may, `wayForHelper` says how it gets there.
Status LinuxFileMetadata::setLockedByItself(const std::string& path, bool locked,
                                            std::optional<std::string>& wayForHelper) const {
  Result<Descriptor> item = openItem(path);
  if (!item) return withOwner(item.error(), path);
  struct stat status;
  if (fstat(item->get(), &status) != 0) return systemError(path);
  if (!canBeImmutable(status))
    return errorWithText(std::errc::invalid_argument, path, "is neither a file nor a folder");
  if (rights_.isSuperuser() && !mayBeChanged(status, rights_))
    return errorWithText(std::errc::operation_not_permitted, path, "belongs to somebody else");
  Status changed = setImmutable(item->get(), path, locked);
  const bool helps = !rights_.isSuperuser() && status.st_uid == rights_.fileOwner();
  if (!changed && changed.error().code == std::errc::operation_not_permitted && helps)
    wayForHelper = wayWithoutLinks(item->get(), path);
  return changed ? changed : withOwner(changed.error(), path);
}

// The kernel's words for what is somebody else's are the same as for much else.
Error LinuxFileMetadata::withOwner(Error error, const std::string& path) const {
  struct stat status;
  if (rights_.isSuperuser() || !rightsCouldHelp(error) || lstat(path.c_str(), &status) != 0 ||
      status.st_uid == rights_.fileOwner())
    return error;
  const std::string owner = databaseName(status.st_uid).value_or("user " + std::to_string(status.st_uid));
  error.text = path + ": it belongs to " + owner;
  error.cure = kAdministratorCan;
  return error;
}

// Where rights are missing, or the helper must not do it, the error says what would help.
Error LinuxFileMetadata::lockError(const std::string& path, int number) {
  Error error = systemError(path, number);
  const auto refused = [&](const std::string& reason, const std::string& cure) {
    return Error{std::errc::operation_not_permitted, path + ": " + reason, cure + " " + kAdministratorCan};
  };
  switch (number) {
    case EPERM:
      error.cure = lockHelper_.cure();
      break;
    case kHasOtherName:
      return refused("it has another name elsewhere (a hard link)", "Remove that, which find -samefile finds.");
    case kIsOutside:
      return refused("it lies outside of your home as this machine knows it, " + homeOfUser(),
                     "Files in that home can be locked.");
    case kIsAmongOthers:
      return refused("others may write to its folder", "Take that right from them with chmod.");
    default:
      break;
  }
  return error;
}

// A helper that runs is asked first. What it could not change is tried without it, which also tells the reason best,
// and then with it again where links stood in its way.
std::vector<Status> LinuxFileMetadata::setAllLocked(const std::vector<std::string>& paths, bool locked) {
  std::vector<int> numbers(paths.size(), EPERM);
  if (lockHelper_.isRunning()) numbers = lockHelper_.setLocked(paths, locked);
  std::vector<Status> results(paths.size());
  std::vector<std::size_t> left;
  std::vector<std::string> ways;
  for (std::size_t i = 0; i < paths.size(); ++i) {
    if (numbers[i] == 0) continue;
    std::optional<std::string> way;
    results[i] = setLockedByItself(paths[i], locked, way);
    if (!way) continue;
    left.push_back(i);
    ways.push_back(std::move(*way));
  }
  numbers = lockHelper_.setLocked(ways, locked);
  for (std::size_t i = 0; i < left.size(); ++i)
    results[left[i]] = numbers[i] == 0 ? Status() : Status(lockError(paths[left[i]], numbers[i]));
  return results;
}

// None stands for now, which whoever may write to the file may set; any other time only its owner.
Status LinuxFileMetadata::setModified(const std::string& path, std::optional<Timestamp> time) {
  const FileRights::Scope scope(rights_);
  Result<Place> place = rights_.locate(path);
  if (!place) return place.error();
  timespec times[2] = {{0, UTIME_NOW}, {0, UTIME_NOW}};
  if (time) {
    times[0] = {0, UTIME_OMIT};
    times[1] = {time->seconds, time->nanoseconds};
  }
  if (!rights_.isAdministrator()) {
    if (utimensat(place->at(), place->name.c_str(), times, 0) != 0) return systemError(path);
    return {};
  }
  const Descriptor item(openat(place->at(), place->name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
  struct stat status;
  if (!item.valid() || fstat(item.get(), &status) != 0) return systemError(path);
  if (!mayBeChanged(status, rights_)) return systemError(path, EPERM);
  if (utimensat(item.get(), "", times, AT_EMPTY_PATH) != 0) return systemError(path);
  return {};
}

Status LinuxFileMetadata::checkWritable(const std::string& path) const {
  const FileRights::Scope scope(rights_);
  return faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0 ? Status() : systemError(path);
}

bool LinuxFileMetadata::isExecutable(const std::string& path) const {
  const FileRights::Scope scope(rights_);
  struct stat status;
  return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
         faccessat(AT_FDCWD, path.c_str(), X_OK, AT_EACCESS) == 0;
}

bool LinuxFileMetadata::isPackage(const std::string& path) const {
  const std::string extension = lowerCased(paths::extension(path));
  if (std::find(kPackageExtensions.begin(), kPackageExtensions.end(), extension) == kPackageExtensions.end())
    return false;
  const FileRights::Scope scope(rights_);
  struct stat status;
  return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

Result<std::string> LinuxFileMetadata::linkTarget(const std::string& path) const {
  const FileRights::Scope scope(rights_);
  char target[PATH_MAX];
  const ssize_t length = readlink(path.c_str(), target, sizeof target);
  if (length < 0) return systemError(path);
  return std::string(target, static_cast<std::size_t>(length));
}

// Only zeros for a file that has none.
Result<std::string> LinuxFileMetadata::finderInfo(const std::string& path) const {
  const FileRights::Scope scope(rights_);
  std::string bytes(kFinderInfoBytes, '\0');
  const ssize_t length = lgetxattr(path.c_str(), kFinderInfo, bytes.data(), bytes.size());
  if (length < 0 && errno != ENODATA) return systemError(path);
  return bytes;
}

Status LinuxFileMetadata::setFinderInfo(const std::string& path, const std::string& bytes) {
  const FileRights::Scope scope(rights_);
  if (bytes.size() != kFinderInfoBytes) return errorWithText(std::errc::invalid_argument, path, "needs 32 bytes");
  const Result<Descriptor> item = openItem(path);
  if (!item) return item.error();
  if (fsetxattr(item->get(), kFinderInfo, bytes.data(), bytes.size(), 0) != 0) return systemError(path);
  return {};
}

}  // namespace vantory
