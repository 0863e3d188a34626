// Walks to where the superuser works, one folder after the other.
#include "platform/macos/files/Rights.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <optional>
#include <string_view>
#include <utility>

#include "base/Paths.h"
#include "platform/posix/files/Errors.h"

namespace vantory::macos {

namespace {

using darwin::AtEnd;
using darwin::ItemStatus;

constexpr int kFolder = O_RDONLY | O_DIRECTORY | O_NOFOLLOW;

// Empty parts and single dots are left out; none where the path goes back up.
std::optional<std::vector<std::string>> partsOf(const std::string& path) {
  std::vector<std::string> parts;
  for (const std::string_view part : paths::components(path)) {
    if (part == "..") return std::nullopt;
    if (part != "/" && part != "." && !part.empty()) parts.emplace_back(part);
  }
  return parts;
}

// Opens folder after folder from the root, passing no link, and shows each to `pass` when it is open. Somebody may
// rename them meanwhile; what is open stays what it was.
template <class Pass>
Descriptor walk(const std::vector<std::string>& folders, Pass pass) {
  Descriptor folder(darwin::openAt(AT_FDCWD, "/", kFolder));
  for (const std::string& name : folders) {
    if (!folder.valid()) return folder;
    folder = Descriptor(uninterrupted([&] { return darwin::openAt(folder.get(), name.c_str(), kFolder); }));
    ItemStatus status;
    if (folder.valid() && darwin::statusOf(folder.get(), status) != 0) return {};
    if (folder.valid()) pass(status);
  }
  return folder;
}

// The folder that a path leads to by no link; none where it does not.
std::optional<ItemStatus> folderAt(const std::string& path) {
  const auto parts = partsOf(path);
  std::optional<ItemStatus> last;
  if (!path.starts_with('/') || !parts || parts->empty()) return last;
  const Descriptor folder = walk(*parts, [&](const ItemStatus& status) { last = status; });
  return folder.valid() ? last : std::nullopt;
}

}  // namespace

Rights Rights::administrator(const User& user, std::vector<std::string> folders) {
  Rights rights;
  rights.isAdministrator_ = true;
  rights.user_ = user;
  rights.folders_ = std::move(folders);
  return rights;
}

Rights Rights::machine() {
  Rights rights = administrator({}, {});
  rights.isEverywhere_ = true;
  return rights;
}

// Where the rights serve is told by the folders that were passed, not by the text: a volume finds a name in any case.
Result<Place> Rights::locate(const std::string& path) const {
  if (!path.starts_with('/') || path.find('\0') != std::string::npos)
    return errorWithText(std::errc::invalid_argument, path, "is no absolute path");
  if (!isAdministrator_) return Place{Descriptor(), path};
  if (path.size() >= PATH_MAX) return systemError(path, ENAMETOOLONG);  // the kernel sees one name at a time only
  auto parts = partsOf(path);
  if (!parts || parts->empty())
    return errorWithText(std::errc::operation_not_permitted, path, "administrator rights do not serve here");
  const std::optional<ItemStatus> home = folderAt(user_.home);
  std::vector<ItemStatus> others;
  for (const std::string& folder : folders_)
    if (const auto status = folderAt(folder)) others.push_back(*status);
  bool isInHome = false;
  bool serves = isEverywhere_;
  Place place;
  place.name = std::move(parts->back());
  parts->pop_back();
  place.folder = walk(*parts, [&](const ItemStatus& status) {
    isInHome = isInHome || (home && isSameItem(*home, status));
    serves = serves || isInHome ||
             std::ranges::any_of(others, [&](const ItemStatus& other) { return isSameItem(other, status); });
  });
  const int cause = errno;
  // Before what is there: that is nobody's business elsewhere.
  if (!serves) return errorWithText(std::errc::operation_not_permitted, path, "administrator rights do not serve here");
  if (!place.folder.valid()) return systemError(path, cause);
  place.isInHome = isInHome;
  return place;
}

Result<Place> Rights::locateInFolder(const std::string& path) const {
  Result<Place> place = locate(path);
  if (!place || place->folder.valid()) return place;
  Descriptor folder(darwin::openAt(AT_FDCWD, paths::parent(path).c_str(), O_RDONLY | O_DIRECTORY));
  if (folder.valid()) return Place{std::move(folder), paths::lastComponent(path)};
  if (errno == EACCES || errno == EPERM) return place;
  return systemError(path);
}

Descriptor Rights::openNewFolder(int parent, const std::string& name) const {
  Descriptor folder(uninterrupted([&] { return darwin::openAt(parent, name.c_str(), kFolder); }));
  ItemStatus status;
  if (!folder.valid() || !isAdministrator_) return folder;
  if (darwin::statusOf(folder.get(), status) != 0) return {};
  if (status.owner == geteuid() && (status.mode & (S_IRWXG | S_IRWXO)) == 0) return folder;
  errno = EPERM;
  return {};
}

int Rights::noFollowFlag() const {
  return isAdministrator_ ? O_NOFOLLOW : 0;
}

AtEnd Rights::atEnd(bool followsLink) const {
  return followsLink && !isAdministrator_ ? AtEnd::FollowLink : AtEnd::KeepLink;
}

bool Rights::mayServe(const ItemStatus& status) const {
  return !isAdministrator_ || S_ISDIR(status.mode) || status.names == 1 ||
         (status.owner == user_.id && !user_.home.empty());
}

// The name that somebody's secret was linked by from outside may be the only one by now.
bool Rights::mayHandOn(const ItemStatus& status) const {
  const bool isAnyones = isEverywhere_ || S_ISDIR(status.mode) || (status.mode & S_IROTH) != 0;
  return mayServe(status) && (!isAdministrator_ || isAnyones || status.owner == user_.id);
}

int Rights::giveAway(int item, bool isInHome, uid_t otherwiseUser, gid_t otherwiseGroup) const {
  if (!isAdministrator_) return 0;
  return darwin::setOwner(item, isInHome ? user_.id : otherwiseUser, isInHome ? user_.group : otherwiseGroup);
}

}  // namespace vantory::macos
