// Renames items into the Trash, under names that are free there.
#include "platform/macos/files/VolumeTrash.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>

#include "base/Paths.h"
#include "base/Text.h"
#include "platform/macos/darwin/Darwin.h"
#include "platform/macos/files/Items.h"
#include "platform/posix/files/Errors.h"

namespace vantory::macos {

namespace {

using darwin::AtEnd;
using darwin::ItemStatus;

constexpr std::size_t kLongestName = 255;  // in bytes, which every volume holds

std::string localTimeText() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  char text[16];
  return std::string(text, std::strftime(text, sizeof text, "%H.%M.%S", &local));
}

// As the Finder calls them: the item's own name, with the time of day where that is taken, then with a number too.
std::string trashedName(const std::string& name, int attempt) {
  if (attempt == 0) return name;
  std::string mark = " " + localTimeText();
  if (attempt > 1) mark.append(" ").append(std::to_string(attempt));
  const std::size_t dot = name.find_last_of('.');
  const bool hasExtension = dot != std::string::npos && dot > 0 && name.size() - dot <= 16;
  const std::string extension = hasExtension ? name.substr(dot) : "";
  const std::string_view stem = std::string_view(name).substr(0, name.size() - extension.size());
  return std::string(shortened(stem, kLongestName - mark.size() - extension.size())) + mark + extension;
}

// Only renaming is done there: looking into a Trash takes a permission that renaming does not.
Result<Trashed> moveInto(const std::string& trash, const std::string& path) {
  constexpr int kMostAttempts = 1000;
  const Result<Place> from = Rights::own().locate(path);
  if (!from) return from.error();
  const std::string name = paths::lastComponent(path);
  for (int attempt = 0; attempt < kMostAttempts; ++attempt) {
    const Place to{Descriptor(), paths::join(trash, trashedName(name, attempt))};
    const Status moved = renameItem(*from, to, path);
    if (moved) return Trashed{to.name};
    if (moved.error().code != std::errc::file_exists) return moved.error();
  }
  return errorWithText(std::errc::device_or_resource_busy, path, "others are filling the Trash");
}

Status checkOwned(const std::string& trash) {
  ItemStatus status;
  if (darwin::statusAt(AT_FDCWD, trash.c_str(), AtEnd::FollowLink, status) != 0) return systemError(trash);
  if (!S_ISDIR(status.mode)) return systemError(trash, ENOTDIR);
  if (status.owner != geteuid())
    return errorWithText(std::errc::operation_not_permitted, trash, "this Trash belongs to somebody else");
  return {};
}

// Whether an item is on the volume of a folder, or of where that folder would be made.
bool lieTogether(const ItemStatus& item, std::string folder) {
  ItemStatus status;
  while (darwin::statusAt(AT_FDCWD, folder.c_str(), AtEnd::FollowLink, status) != 0) {
    if (folder == "/") return false;
    folder = paths::parent(folder);
  }
  return status.device == item.device;
}

// ".Trashes" at the top of a volume holds a folder for each user. A link there would be a trap.
Result<std::string> volumesTrash(const std::string& path) {
  const std::string top = darwin::volumeOf(AT_FDCWD, path);
  if (top.empty()) return systemError(path);
  const std::string shared = paths::join(top, ".Trashes");
  ItemStatus status;
  if (mkdir(shared.c_str(), 01333) == 0) (void)chmod(shared.c_str(), 01333);
  if (darwin::statusAt(AT_FDCWD, shared.c_str(), AtEnd::KeepLink, status) != 0 || !S_ISDIR(status.mode))
    return errorWithText(std::errc::not_supported, path, "there is no Trash on its volume");
  const std::string own = paths::join(shared, std::to_string(geteuid()));
  if (mkdir(own.c_str(), S_IRWXU) != 0 && errno != EEXIST) return systemError(own);
  if (darwin::statusAt(AT_FDCWD, own.c_str(), AtEnd::KeepLink, status) != 0) return systemError(own);
  if (S_ISLNK(status.mode)) return systemError(own, ENOTDIR);
  return own;
}

}  // namespace

Result<Trashed> putInTrash(const std::string& path, const std::string& usersTrash) {
  ItemStatus item;
  if (const Result<Place> place = Rights::own().locate(path); !place) return place.error();
  if (darwin::statusAt(AT_FDCWD, path.c_str(), AtEnd::KeepLink, item) != 0) return systemError(path);
  Result<std::string> trash = usersTrash;
  if (!lieTogether(item, usersTrash)) {
    trash = volumesTrash(path);
    if (!trash) return trash.error();
  } else if (const Status made = createFolders(usersTrash, Rights::own()); !made) {
    return made.error();
  }
  if (const Status owned = checkOwned(*trash); !owned) return owned.error();
  return moveInto(*trash, path);
}

}  // namespace vantory::macos
