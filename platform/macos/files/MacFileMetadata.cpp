// Asks the system for flags, dates and labels, and sets them.
#include "platform/macos/files/MacFileMetadata.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <string_view>

#include "base/Paths.h"
#include "base/Text.h"
#include "platform/macos/darwin/Darwin.h"
#include "platform/macos/files/Items.h"
#include "platform/posix/files/Errors.h"

namespace vantory {

namespace {

using darwin::AtEnd;
using darwin::ItemStatus;

constexpr const char* kFinderInfo = "com.apple.FinderInfo";
constexpr std::size_t kFinderInfoBytes = 32;
// In the flags that the Finder keeps of a folder: whether it is shown as one file.
constexpr std::size_t kBundleFlagByte = 8;
constexpr unsigned char kBundleFlag = 0x20;

constexpr std::array<std::string_view, 13> kPackageExtensions = {
    "app",        "appex", "bundle", "fcpbundle", "framework", "imovielibrary", "kext",
    "mdimporter", "pkg",   "plugin", "prefpane",  "vnt",       "vnt2"};

bool isRegularFile(const std::string& path) {
  ItemStatus status;
  return darwin::statusAt(AT_FDCWD, path.c_str(), AtEnd::FollowLink, status) == 0 && S_ISREG(status.mode);
}

// The flags that an item has with or without the owner's lock; the error says why it cannot be had.
Result<std::uint32_t> flagsFor(const ItemStatus& status, const std::string& path, bool locked) {
  if (!S_ISREG(status.mode) && !S_ISDIR(status.mode))
    return errorWithText(std::errc::invalid_argument, path, "is neither a file nor a folder");
  if (!locked && (status.flags & darwin::kSystemImmutable) != 0)
    return errorWithText(std::errc::operation_not_permitted, path, "the system has locked it");
  return locked ? status.flags | darwin::kImmutable : status.flags & ~static_cast<std::uint32_t>(darwin::kImmutable);
}

// Opens what the superuser is to change for a user: in its place there may be another item by the next moment.
Result<Descriptor> openForChange(const std::string& path, const macos::Rights& rights, ItemStatus& status) {
  const Result<Place> place = rights.locate(path);
  if (!place) return place.error();
  Descriptor item(uninterrupted(
      [&] { return darwin::openAt(place->at(), place->name.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW); }));
  if (!item.valid() || darwin::statusOf(item.get(), status) != 0) return systemError(path);
  if (!rights.mayServe(status)) return systemError(path, EPERM);
  return item;
}

Status setLockedAsAdministrator(const std::string& path, bool locked, const macos::Rights& rights) {
  ItemStatus status;
  const Result<Descriptor> item = openForChange(path, rights, status);
  if (!item) return item.error();
  const Result<std::uint32_t> flags = flagsFor(status, path, locked);
  if (!flags) return flags.error();
  return *flags == status.flags || darwin::setFlags(item->get(), *flags) == 0 ? Status() : systemError(path);
}

// The superuser, too, locks only what is its own. The flags that are there stay, and so does what was opened meanwhile
// under this name by another program.
Status setLockedItem(const std::string& path, bool locked) {
  const Result<Place> place = macos::Rights::own().locateInFolder(path);
  if (!place) return place.error();
  const char* name = place->name.c_str();
  ItemStatus status;
  if (darwin::statusAt(place->at(), name, AtEnd::KeepLink, status) != 0) return systemError(path);
  const Result<std::uint32_t> flags = flagsFor(status, path, locked);
  if (!flags) return flags.error();
  if (status.owner != geteuid())
    return errorWithText(std::errc::operation_not_permitted, path, "belongs to somebody else");
  if (*flags == status.flags) return {};
  if (darwin::setFlagsAt(place->at(), name, *flags) != 0) return systemError(path);
  ItemStatus now;
  if (darwin::statusAt(place->at(), name, AtEnd::KeepLink, now) != 0) return systemError(path);
  if (!isSameItem(status, now))
    return errorWithText(std::errc::device_or_resource_busy, path, "another item has taken its place");
  return {};
}

}  // namespace

std::vector<Status> MacFileMetadata::setAllLocked(const std::vector<std::string>& paths, bool locked) {
  std::vector<Status> results;
  results.reserve(paths.size());
  for (const std::string& path : paths)
    results.push_back(rights_.isAdministrator() ? setLockedAsAdministrator(path, locked, rights_)
                                                : setLockedItem(path, locked));
  return results;
}

Status MacFileMetadata::setModified(const std::string& path, std::optional<Timestamp> time) {
  timespec times[2] = {{0, UTIME_NOW}, {0, UTIME_NOW}};
  if (time) {
    times[0] = {0, UTIME_OMIT};
    times[1] = {static_cast<time_t>(time->seconds), time->nanoseconds};
  }
  if (!rights_.isAdministrator())
    return utimensat(AT_FDCWD, path.c_str(), times, 0) == 0 ? Status() : systemError(path);
  ItemStatus status;
  const Result<Descriptor> item = openForChange(path, rights_, status);
  if (!item) return item.error();
  return futimens(item->get(), times) == 0 ? Status() : systemError(path);
}

Status MacFileMetadata::checkWritable(const std::string& path) const {
  return faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0 ? Status() : systemError(path);
}

bool MacFileMetadata::isExecutable(const std::string& path) const {
  return isRegularFile(path) && faccessat(AT_FDCWD, path.c_str(), X_OK, AT_EACCESS) == 0;
}

bool MacFileMetadata::isPackage(const std::string& path) const {
  ItemStatus status;
  if (darwin::statusAt(AT_FDCWD, path.c_str(), AtEnd::FollowLink, status) != 0 || !S_ISDIR(status.mode)) return false;
  const std::string extension = lowerCased(paths::extension(path));
  if (std::ranges::find(kPackageExtensions, extension) != kPackageExtensions.end()) return true;
  const Result<std::string> noted = finderInfo(path);
  return noted && (static_cast<unsigned char>((*noted)[kBundleFlagByte]) & kBundleFlag) != 0;
}

Result<std::string> MacFileMetadata::linkTarget(const std::string& path) const {
  char target[PATH_MAX];
  const ssize_t length = readlink(path.c_str(), target, sizeof target);
  if (length < 0) return systemError(path);
  return std::string(target, static_cast<std::size_t>(length));
}

// Only zeros for a file that has none.
Result<std::string> MacFileMetadata::finderInfo(const std::string& path) const {
  std::string bytes(kFinderInfoBytes, '\0');
  const ssize_t length = darwin::attributeAt(path.c_str(), kFinderInfo, bytes.data(), bytes.size());
  if (length < 0 && errno != darwin::kNoAttribute) return systemError(path);
  return bytes;
}

// Zeros are what a file without it has.
Status MacFileMetadata::setFinderInfo(const std::string& path, const std::string& bytes) {
  if (bytes.size() != kFinderInfoBytes) return errorWithText(std::errc::invalid_argument, path, "needs 32 bytes");
  const bool isEmpty = bytes.find_first_not_of('\0') == std::string::npos;
  const int set = isEmpty ? darwin::removeAttributeAt(path.c_str(), kFinderInfo)
                          : darwin::setAttributeAt(path.c_str(), kFinderInfo, bytes.data(), bytes.size());
  if (set != 0 && !(isEmpty && errno == darwin::kNoAttribute)) return systemError(path);
  return {};
}

}  // namespace vantory
