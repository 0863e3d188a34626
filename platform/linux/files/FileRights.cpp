// Opens folders without following links, with the right identity.
#include "platform/linux/files/FileRights.h"

#include <grp.h>
#include <linux/openat2.h>
#include <sys/fsuid.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <deque>
#include <string_view>

#include "platform/posix/files/Errors.h"
#include "platform/posix/processes/PasswordDatabase.h"

namespace vantory {
namespace {

// Whether this thread works with a user's rights already.
thread_local bool taken = false;

// Empty parts and single dots are left out, ".." is not.
std::vector<std::string> componentsOf(std::string_view path) {
  std::vector<std::string> components;
  for (std::size_t start = 0; start <= path.size();) {
    const std::size_t slash = std::min(path.find('/', start), path.size());
    const std::string_view component = path.substr(start, slash - start);
    if (!component.empty() && component != ".") components.emplace_back(component);
    start = slash + 1;
  }
  return components;
}

bool liesBelow(std::string_view path, std::string_view folder) {
  return path.size() > folder.size() + 1 && path.substr(0, folder.size()) == folder && path[folder.size()] == '/';
}

// The target of a link of the superuser's; empty, with errno ELOOP, for anyone else's, and for one that may have been
// brought here by a second name.
std::string trustedTarget(int folder, const std::string& name) {
  const Descriptor link(openat(folder, name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
  struct stat status;
  if (!link.valid() || fstat(link.get(), &status) != 0) return {};
  char target[PATH_MAX];
  const ssize_t length = readlinkat(link.get(), "", target, sizeof target);
  if (length <= 0) return {};
  if (status.st_uid != 0 || status.st_nlink != 1 || length == sizeof target) {
    errno = ELOOP;
    return {};
  }
  return std::string(target, static_cast<std::size_t>(length));
}

// Where a user could have put a link, none is followed.
bool onlySuperuserChanges(const Descriptor& folder) {
  struct stat status;
  return fstat(folder.get(), &status) == 0 && status.st_uid == 0 && (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

// Opens the folder that these names lead to from the root, following links of the superuser's only. In a folder that
// others may change, and anywhere below, a user can have moved such a link, so that it leads elsewhere than it was
// meant to: there none is followed.
Descriptor openTrusted(std::deque<std::string> ahead) {
  constexpr int kFlags = O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
  constexpr int kMostLinks = 40;
  Descriptor folder(open("/", kFlags));
  bool trusted = true;
  for (int links = 0; !ahead.empty() && folder.valid();) {
    trusted = trusted && onlySuperuserChanges(folder);
    const std::string name = std::move(ahead.front());
    ahead.pop_front();
    Descriptor next(openat(folder.get(), name.c_str(), kFlags));
    if (next.valid()) {
      folder = std::move(next);
      continue;
    }
    if (!trusted || (errno != ENOTDIR && errno != ELOOP)) return {};
    const std::string target = trustedTarget(folder.get(), name);
    if (target.empty()) return {};
    if (++links > kMostLinks) {
      errno = ELOOP;
      return {};
    }
    const auto inserted = componentsOf(target);
    ahead.insert(ahead.begin(), inserted.begin(), inserted.end());
    if (target.front() == '/') folder = Descriptor(open("/", kFlags));
  }
  return folder;
}

}  // namespace

FileRights FileRights::own() {
  return {Kind::Own, {}};
}

// With the groups that a login would give.
FileRights FileRights::ofUser(const User& user) {
  if (user.id == 0) return own();
  FileRights rights(Kind::User, user);
  const std::string name = databaseName(user.id).value_or("");
  int count = 64;
  rights.groups_.resize(static_cast<std::size_t>(count));
  if (getgrouplist(name.c_str(), user.group, rights.groups_.data(), &count) < 0) {
    rights.groups_.resize(static_cast<std::size_t>(count));
    getgrouplist(name.c_str(), user.group, rights.groups_.data(), &count);
  }
  rights.groups_.resize(static_cast<std::size_t>(std::max(count, 0)));
  return rights;
}

FileRights FileRights::administrator(const User& user, std::vector<std::string> folders) {
  FileRights rights(Kind::Administrator, user);
  rights.folders_ = std::move(folders);
  return rights;
}

FileRights FileRights::machine() {
  return administrator({}, {""});  // every path lies below
}

// The calls of the kernel, not of the C library: those change one thread, these would change all. The user id goes last
// because it takes the right to change the others away, and comes back first. Working on with the superuser's identity
// would be worse than ending.
FileRights::Scope::Scope(const FileRights& rights) {
  if (rights.kind_ != Kind::User || taken) return;
  releases_ = taken = true;
  if (syscall(SYS_setgroups, rights.groups_.size(), rights.groups_.data()) != 0) std::abort();
  setfsgid(rights.user_.group);
  setfsuid(rights.user_.id);
  // A negative id changes nothing and answers the present one.
  if (static_cast<gid_t>(setfsgid(static_cast<gid_t>(-1))) != rights.user_.group ||
      static_cast<uid_t>(setfsuid(static_cast<uid_t>(-1))) != rights.user_.id)
    std::abort();
}

FileRights::Scope::~Scope() {
  if (!releases_) return;
  setfsuid(geteuid());
  setfsgid(getegid());
  syscall(SYS_setgroups, 0, nullptr);  // the superuser needs none
  taken = false;
}

// Only administrator rights look at each step of the way; for all others the kernel does.
Result<Place> FileRights::locate(const std::string& path) const {
  if (path.empty() || path.front() != '/' || path.find('\0') != std::string::npos)
    return errorWithText(std::errc::invalid_argument, path, "is no absolute path");
  if (kind_ != Kind::Administrator) return Place{{}, path};
  if (path.size() >= PATH_MAX) return systemError(path, ENAMETOOLONG);  // the kernel sees one name at a time only

  const auto parts = componentsOf(path);
  std::string plain;  // as the parts alone say it: no extra slash or dot makes a folder look like something in it
  for (const std::string& part : parts) plain.append("/").append(part);
  const bool serves = std::any_of(folders_.begin(), folders_.end(),
                                  [&](const std::string& folder) { return liesBelow(plain, folder); });
  if (!serves || std::find(parts.begin(), parts.end(), "..") != parts.end())
    return errorWithText(std::errc::operation_not_permitted, path, "administrator rights do not serve here");
  Place place{openTrusted({parts.begin(), parts.end() - 1}), parts.back()};
  if (!place.folder.valid()) return systemError(path);
  return place;
}

// Another's folder in the place of the new one shows by its owner or its mode.
Descriptor FileRights::openNewFolder(int parent, const std::string& name) const {
  Descriptor folder(
      uninterrupted([&] { return openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC); }));
  if (!folder.valid() || kind_ != Kind::Administrator) return folder;
  struct stat status;
  if (fstat(folder.get(), &status) != 0) return {};
  if (status.st_uid == geteuid() && (status.st_mode & (S_IRWXG | S_IRWXO)) == 0) return folder;
  errno = EPERM;
  return {};
}

uid_t FileRights::fileOwner() const {
  return kind_ == Kind::Own ? geteuid() : user_.id;
}

mode_t FileRights::permittedMode(mode_t mode) const {
  return superuser_ ? mode & 01777U : mode & 07777U;
}

bool FileRights::isInHome(const std::string& path) const {
  return !user_.home.empty() && liesBelow(path, user_.home);
}

Status FileRights::giveAway(int descriptor, const std::string& path, uid_t otherwiseUser, gid_t otherwiseGroup) const {
  return giveAway(descriptor, "", path, otherwiseUser, otherwiseGroup);
}

Status FileRights::giveAway(int folder, const char* name, const std::string& path, uid_t otherwiseUser,
                            gid_t otherwiseGroup) const {
  if (kind_ != Kind::Administrator) return {};
  const bool inHome = isInHome(path);
  if (fchownat(folder, name, inHome ? user_.id : otherwiseUser, inHome ? user_.group : otherwiseGroup,
               AT_EMPTY_PATH | AT_SYMLINK_NOFOLLOW) != 0)
    return systemError(path);
  return {};
}

mode_t FileRights::folderMode(const std::string& path) const {
  return kind_ != Kind::Administrator || isInHome(path) ? 0700 : 0755;
}

bool FileRights::mayCopy(const struct stat& status) const {
  return kind_ != Kind::Administrator || !S_ISREG(status.st_mode) || status.st_nlink == 1 || status.st_uid == user_.id;
}

Descriptor openBeneath(int folder, const std::string& relativePath, int flags) {
  open_how how{};
  how.flags = static_cast<std::uint64_t>(flags | O_CLOEXEC);
  how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS | RESOLVE_NO_MAGICLINKS;
  const auto opened = uninterrupted(
      [&] { return static_cast<int>(syscall(SYS_openat2, folder, relativePath.c_str(), &how, sizeof how)); });
  if (opened >= 0 || (errno != ENOSYS && errno != EPERM)) return Descriptor(opened);

  // A kernel or sandbox without openat2: one component after the other.
  const auto parts = componentsOf(relativePath);
  if (parts.empty() || std::find(parts.begin(), parts.end(), "..") != parts.end()) {
    errno = EXDEV;
    return {};
  }
  Descriptor current(fcntl(folder, F_DUPFD_CLOEXEC, 0));
  for (std::size_t i = 0; i + 1 < parts.size() && current.valid(); ++i)
    current = Descriptor(openat(current.get(), parts[i].c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!current.valid()) return {};
  return Descriptor(openat(current.get(), parts.back().c_str(), flags | O_NOFOLLOW | O_CLOEXEC));
}

}  // namespace vantory
