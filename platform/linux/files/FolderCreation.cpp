#include "platform/linux/files/FolderCreation.h"

#include <fcntl.h>
#include <sys/stat.h>

#include "platform/linux/files/FileRights.h"
#include "platform/posix/files/Descriptor.h"
#include "platform/posix/files/Errors.h"

namespace vantory {
namespace {

Status createFolder(const std::string& path, const FileRights& rights) {
  Result<Place> place = rights.locate(path);
  if (!place) return place.error();
  const char* name = place->name.c_str();
  if (uninterrupted([&] { return mkdirat(place->at(), name, S_IRWXU); }) == 0) {
    if (!rights.isAdministrator()) return {};
    const Descriptor made = rights.openNewFolder(place->at(), place->name);
    if (!made.valid() || fchmod(made.get(), rights.folderMode(path)) != 0) return systemError(path);
    return rights.giveAway(made.get(), path, getuid(), getgid());
  }
  if (errno != EEXIST) return systemError(path);
  struct stat status;
  if (fstatat(place->at(), name, &status, rights.isAdministrator() ? AT_SYMLINK_NOFOLLOW : 0) != 0)
    return systemError(path);
  if (!S_ISDIR(status.st_mode)) return systemError(path, ENOTDIR);
  return {};
}

}  // namespace

Status createFolders(const std::string& path, const FileRights& rights) {
  Status made = createFolder(path, rights);
  if (made || made.error().code != std::errc::no_such_file_or_directory) return made;
  const std::size_t slash = path.find_last_of('/', path.find_last_not_of('/'));
  if (slash == std::string::npos || slash == 0) return made;
  if (Status above = createFolders(path.substr(0, slash), rights); !above) return above;
  return createFolder(path, rights);
}

}  // namespace vantory
