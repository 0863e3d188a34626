// Serves requests on descriptors that the caller hands over.
#include "programs/vantory-lock-helper/LockService.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <vector>

#include "base/Paths.h"
#include "platform/linux/files/FileRights.h"
#include "platform/linux/locks/ImmutableFlag.h"
#include "platform/linux/locks/LockProtocol.h"
#include "platform/linux/system/LinuxStandardFolders.h"
#include "platform/posix/files/Errors.h"
#include "platform/posix/files/Names.h"
#include "platform/posix/processes/PasswordDatabase.h"

namespace vantory {

namespace {

// Empty for what is not there: nothing is served below it.
std::string withoutLinks(const std::string& path) {
  char real[PATH_MAX];
  return realpath(path.c_str(), real) ? real : "";
}

// The home that the machine knows, whatever the caller's environment says, and the folders shared by all users.
std::vector<std::string> servedFolders() {
  std::vector<std::string> folders;
  struct stat status;
  const auto user = databaseUser(getuid());
  const std::string home = withoutLinks(user ? user->home : "");
  if (!home.empty() && stat(home.c_str(), &status) == 0 && status.st_uid == getuid()) folders.push_back(home);
  const std::string shared = withoutLinks(LinuxStandardFolders().localFolder(StandardFolder::SharedUsers).value_or(""));
  if (!shared.empty()) folders.push_back(shared);
  return folders;
}

bool isServed(const std::string& path) {
  static const std::vector<std::string> folders = servedFolders();
  return std::any_of(folders.begin(), folders.end(),
                     [&](const std::string& folder) { return path.starts_with(folder + "/"); });
}

// What is locked in a folder, nobody else who may write to it could take away any more.
Status checkFolder(int folder, const std::string& path) {
  struct stat status;
  if (fstat(folder, &status) != 0) return systemError(path);
  const bool groupIsOthers = status.st_uid != getuid();
  if ((status.st_mode & (groupIsOthers ? S_IWGRP | S_IWOTH : S_IWOTH)) != 0) return systemError(path, kIsAmongOthers);
  return {};
}

// The second name of a file may lie anywhere.
Status checkOwn(int item, const std::string& path) {
  struct stat status;
  if (fstat(item, &status) != 0) return systemError(path);
  if (!canBeImmutable(status)) return systemError(path, EINVAL);
  if (status.st_uid != getuid()) return systemError(path, EPERM);
  if (S_ISREG(status.st_mode) && status.st_nlink != 1) return systemError(path, kHasOtherName);
  return {};
}

// The folder of one path after the other: the paths of a request mostly share one.
class FolderOfPaths {
 public:
  // Opened anew only where it is another than before.
  const Descriptor& of(const std::string& path) {
    static const Descriptor root(open("/", O_PATH | O_DIRECTORY | O_CLOEXEC));
    std::string folder = paths::parent(path);
    if (folder != path_ || !folder_.valid()) {
      folder_ = openBeneath(root.get(), folder.substr(1), O_PATH | O_DIRECTORY);
      path_ = std::move(folder);
    }
    return folder_;
  }

 private:
  std::string path_;
  Descriptor folder_;
};

// Looks before it opens, because opening a pipe or a device is an act already; and looks again at what it has opened,
// because that may be something else by then.
Result<Descriptor> openOwn(const std::string& text, FolderOfPaths& folders) {
  const std::string path = plainPath(text).value_or("");
  if (path.empty()) return systemError(text, EINVAL);
  if (!isServed(path)) return systemError(path, kIsOutside);
  const Descriptor& folder = folders.of(path);
  if (!folder.valid()) return systemError(path);
  if (const Status allowed = checkFolder(folder.get(), path); !allowed) return allowed.error();
  Descriptor item;
  for (const int flags : {O_PATH, O_RDONLY | O_NONBLOCK | O_NOCTTY}) {
    item = openBeneath(folder.get(), paths::lastComponent(path), flags | O_NOFOLLOW);
    if (!item.valid()) return systemError(path);
    if (const Status own = checkOwn(item.get(), path); !own) return own.error();
  }
  return item;
}

Status setLocked(const std::string& path, bool locked, FolderOfPaths& folders) {
  const Result<Descriptor> item = openOwn(path, folders);
  return item ? setImmutable(item->get(), path, locked) : item.error();
}

}  // namespace

std::optional<Message> serveLockRequest(const Message& request) {
  const bool locks = request.front() == kLock;
  if (!locks && request.front() != kUnlock) return std::nullopt;
  if (request.size() < 2 || request.size() - 1 > kMostPathsAtOnce) return std::nullopt;
  Message answer;
  FolderOfPaths folders;
  for (std::size_t i = 1; i < request.size(); ++i) {
    const Status done = setLocked(request[i], locks, folders);
    answer.push_back(std::to_string(done ? 0 : static_cast<int>(done.error().code)));
  }
  return answer;
}

}  // namespace vantory
