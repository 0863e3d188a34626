// Finds the Trash of a file's own disk, writes the note, then renames.
#include "platform/linux/files/DesktopTrash.h"

#include <fcntl.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <ctime>

#include "base/Paths.h"
#include "platform/TrashLayout.h"
#include "platform/linux/files/Folders.h"
#include "platform/linux/files/Moving.h"
#include "platform/linux/files/Staging.h"
#include "platform/posix/files/Errors.h"

namespace vantory {
namespace {

// The item's own name, or with a number before its extension.
std::string numberedName(std::string_view name, int number) {
  std::string mark;
  if (number > 1) mark.append(1, '.').append(std::to_string(number));
  const std::size_t dot = name.find_last_of('.');
  const bool hasExtension = dot != std::string::npos && dot > 0 && name.size() - dot <= 16;
  const std::size_t end = hasExtension ? dot : name.size();
  return nameInTrash(name.substr(0, end), mark, name.substr(end), true);
}

// A number above a taken one that is free now, found in so few steps that the thousandth item of a name does not look
// at a thousand: in growing strides up to a free one, then by halving the last stride.
int freeNumber(int infoFolder, const std::string& name, int taken) {
  const auto isTaken = [&](int number) {
    return faccessat(infoFolder, trashNoteName(numberedName(name, number)).c_str(), F_OK, AT_SYMLINK_NOFOLLOW) == 0;
  };
  int free = taken + 1;
  for (int stride = 2; isTaken(free); stride *= 2) {
    taken = free;
    free += stride;
  }
  while (free - taken > 1) {
    const int middle = taken + (free - taken) / 2;
    (isTaken(middle) ? taken : free) = middle;
  }
  return free;
}

std::string localDateText(std::time_t time) {
  std::tm local{};
  localtime_r(&time, &local);
  char date[32];
  std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &local);
  return date;
}

// Fails where the name is taken; nothing of a note stays that could not be written.
Status writeInfo(int folder, const std::string& name, const std::string& text, const std::string& path) {
  const Descriptor file(uninterrupted([&] {
    return openat(folder, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR);
  }));
  if (!file.valid()) return systemError(path);
  for (std::size_t done = 0; done < text.size();) {
    const ssize_t count = uninterrupted([&] { return write(file.get(), text.data() + done, text.size() - done); });
    if (count < 0) {
      const Error error = systemError(path);
      unlinkat(folder, name.c_str(), 0);
      return error;
    }
    done += static_cast<std::size_t>(count);
  }
  return {};
}

// Not the device: on an overlay each item may have that of the layer it lies in. 0 where nothing is.
std::uint64_t mountOf(int folder, const std::string& name, int flags = AT_SYMLINK_NOFOLLOW) {
  struct statx status;
  if (statx(folder, name.c_str(), flags, STATX_MNT_ID, &status) != 0) return 0;
  return (status.stx_mask & STATX_MNT_ID) != 0 ? status.stx_mnt_id
                                               : makedev(status.stx_dev_major, status.stx_dev_minor);
}

// The folder on which the file system that holds this real path is mounted.
std::string topDirectoryOf(std::string path) {
  const std::uint64_t mount = mountOf(AT_FDCWD, path);
  while (path != "/") {
    const std::string above = paths::parent(path);
    if (mountOf(AT_FDCWD, above) != mount) break;
    path = above;
  }
  return path;
}

Result<std::string> realPath(const std::string& path) {
  char resolved[PATH_MAX];
  if (!realpath(path.c_str(), resolved)) return systemError(path);
  return std::string(resolved);
}

// The Trash that an administrator set up for everybody at the top of a file system counts only when nobody can be led
// astray in it.
bool isSharedTrash(const std::string& path) {
  struct stat status;
  return lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && (status.st_mode & S_ISVTX) != 0;
}

// Whether an item is on the file system of a folder, or of where that folder would be made.
bool lieTogether(const Place& item, std::string folder) {
  const std::uint64_t itemMount = mountOf(item.at(), item.name);
  if (itemMount == 0) return true;
  std::uint64_t mount = 0;
  while ((mount = mountOf(AT_FDCWD, folder, 0)) == 0) {
    if (folder == "/") return false;
    folder = paths::parent(folder);
  }
  return mount == itemMount;
}

}  // namespace

// Folders that somebody removed while they were open are made once more.
Result<Trashed> DesktopTrash::put(const std::string& path, const std::string& homeFiles) {
  const std::lock_guard lock(mutex_);
  const FileRights::Scope scope(rights_);
  Result<Place> item = rights_.locate(path);
  if (!item) return item.error();
  Result<Trashed> trashed = putInto(*item, path, homeFiles);
  const bool folderVanished = !trashed && trashed.error().code == std::errc::no_such_file_or_directory;
  return folderVanished ? putInto(*item, path, homeFiles) : trashed;
}

Result<Trashed> DesktopTrash::putInto(const Place& item, const std::string& path, const std::string& homeFiles) {
  // An item beside the user's own Trash belongs there or nowhere. Where that Trash is open already, moving the item
  // there tells.
  Can* const known = knownCan(homeFiles);
  if (known || lieTogether(item, homeFiles)) {
    Result<Can*> can = known ? known : homeCan(homeFiles);
    if (!can) return can.error();
    Result<Trashed> trashed = putInto(**can, item, path);
    if (trashed || trashed.error().code != std::errc::cross_device_link) return trashed;
  }
  Result<Can*> volume = volumeCan(path);
  if (!volume) return volume.error();
  return putInto(**volume, item, path);
}

DesktopTrash::Can* DesktopTrash::knownCan(std::string_view filesFolder) const {
  for (const auto& can : cans_)
    if (can->filesPath == filesFolder) return can.get();
  return nullptr;
}

// Opened when it is first needed, and kept.
Result<DesktopTrash::Can*> DesktopTrash::homeCan(const std::string& homeFiles) {
  Result<Can> opened = openCan(paths::parent(homeFiles), "");
  if (!opened) return opened.error();
  return cans_.emplace_back(std::make_unique<Can>(std::move(*opened))).get();
}

// As the desktops agreed: a shared Trash with a folder for each user, or else the user's own beside it.
Result<DesktopTrash::Can*> DesktopTrash::volumeCan(const std::string& path) {
  Result<std::string> folder = realPath(paths::parent(path));
  if (!folder) return folder.error();
  const std::string top = topDirectoryOf(*folder);
  for (const auto& can : cans_)
    if (can->topDirectory == top) return can.get();
  const std::string owner = std::to_string(rights_.fileOwner());
  Result<Can> opened = isSharedTrash(paths::join(top, ".Trash")) ? openCan(paths::join(top, ".Trash/" + owner), top)
                                                                 : openCan(paths::join(top, ".Trash-" + owner), top);
  if (!opened) return opened.error();
  return cans_.emplace_back(std::make_unique<Can>(std::move(*opened))).get();
}

Result<DesktopTrash::Can> DesktopTrash::openCan(const std::string& path, const std::string& topDirectory) const {
  constexpr int kFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
  if (const Status made = createFolders(path, rights_); !made) return made.error();
  // The user's own Trash may be a link to a larger disk; at the top of a shared file system a link is a trap.
  const Descriptor base(open(path.c_str(), kFlags | (topDirectory.empty() ? 0 : O_NOFOLLOW)));
  struct stat status;
  if (!base.valid() || fstat(base.get(), &status) != 0) return systemError(path);
  if (status.st_uid != rights_.fileOwner())
    return errorWithText(std::errc::operation_not_permitted, path, "this Trash belongs to somebody else");

  Can can{path + "/" + kTrashItemsFolder, topDirectory, {}, {}, {}};
  for (const auto& [name, folder] :
       {std::pair{kTrashItemsFolder, &can.files}, std::pair{kTrashNotesFolder, &can.info}}) {
    mkdirat(base.get(), name, S_IRWXU);
    *folder = Descriptor(openat(base.get(), name, kFlags | O_NOFOLLOW));
    if (!folder->valid()) return systemError(path + "/" + name);
  }
  return can;
}

Result<Trashed> DesktopTrash::putInto(Can& can, const Place& item, const std::string& path) {
  constexpr int kMostAttempts = 1000;
  const std::string name = paths::lastComponent(path);
  std::string original = path;
  if (!can.topDirectory.empty()) {
    Result<std::string> folder = realPath(paths::parent(path));
    if (!folder) return folder.error();
    original = paths::join(*folder, name).substr(can.topDirectory == "/" ? 1 : can.topDirectory.size() + 1);
  }
  const std::time_t now = std::time(nullptr);
  if (now != dateTime_) date_ = localDateText(dateTime_ = now);
  const std::string text = trashNote(original, date_);

  const auto last = can.lastNumbers.find(name);
  int number = last == can.lastNumbers.end() ? 1 : last->second + 1;
  for (int attempt = 0; attempt < kMostAttempts; ++attempt) {
    const std::string trashed = numberedName(name, number);
    const Status noted = writeInfo(can.info.get(), trashNoteName(trashed), text, path);
    if (!noted && noted.error().code == std::errc::no_such_file_or_directory) forget(can);
    if (!noted && noted.error().code != std::errc::file_exists) return noted.error();
    if (noted) {
      Result<Notes> moved = moveInto(can, trashed, item, path);
      if (moved) {
        if (number > 1) can.lastNumbers[name] = number;
        return Trashed{paths::join(can.filesPath, trashed), std::move(*moved)};
      }
      unlinkat(can.info.get(), trashNoteName(trashed).c_str(), 0);
      if (moved.error().code == std::errc::no_such_file_or_directory) forget(can);
      if (moved.error().code != std::errc::file_exists) return moved.error();
      ++number;  // a file without its note; no other item may take its place
    } else {
      number = freeNumber(can.info.get(), name, number);
    }
  }
  return errorWithText(std::errc::device_or_resource_busy, path, "others are filling the Trash");
}

// An overlay renames no folder of its lower layers, though the Trash be beside it: such a one is copied.
Result<Notes> DesktopTrash::moveInto(const Can& can, const std::string& trashed, const Place& item,
                                     const std::string& path) const {
  const Status renamed = renameItem(item, can.files.get(), trashed, path);
  if (renamed) return Notes();
  if (renamed.error().code != std::errc::cross_device_link || !lieTogether(item, can.filesPath)) return renamed.error();
  const Place place{Descriptor(fcntl(can.files.get(), F_DUPFD_CLOEXEC, 0)), trashed};
  if (!place.folder.valid()) return systemError(path);
  return moveByCopying(item, place, path, paths::join(can.filesPath, trashed), rights_);
}

// The folders were removed while we had them open.
void DesktopTrash::forget(const Can& can) {
  cans_.erase(std::find_if(cans_.begin(), cans_.end(), [&](const auto& known) { return known.get() == &can; }));
}

}  // namespace vantory
