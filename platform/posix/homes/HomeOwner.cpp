// Finds the owner of a home, and becomes that user.
#include "platform/posix/homes/HomeOwner.h"

#include <fcntl.h>
#include <grp.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <utility>
#include <vector>

#include "base/Paths.h"
#include "platform/posix/files/Descriptor.h"
#include "platform/posix/files/EnvironmentFolder.h"
#include "platform/posix/files/Errors.h"
#include "platform/posix/kernel/Kernel.h"
#include "platform/posix/processes/PasswordDatabase.h"

extern "C" char** environ;  // which not every system's headers declare

namespace vantory {

namespace {

Error refusal(const std::string& text, std::errc code = std::errc::invalid_argument) {
  return {code, text};
}

Result<struct stat> folderStatus(const std::string& home, int (*ask)(const char*, struct stat*)) {
  struct stat status {};
  if (ask(home.c_str(), &status) != 0) return systemError(home);
  if (S_ISLNK(status.st_mode)) return refusal(home + " is a link. Name the folder that it leads to.");
  if (!S_ISDIR(status.st_mode)) return refusal(home + " is no folder.");
  if (home == "/") return refusal("The root folder is nobody's home.");
  return status;
}

// Who may rename a folder on the way could put somebody else's in the home's place.
Status checkFoldersAbove(const std::string& home, uid_t owner) {
  for (std::string folder = paths::parent(home);; folder = paths::parent(folder)) {
    struct stat status {};
    if (lstat(folder.c_str(), &status) != 0) return systemError(folder);
    const bool isForeign = status.st_uid != 0 && status.st_uid != owner;
    const bool isOpenToAll = (status.st_mode & S_IWOTH) != 0 && (status.st_mode & S_ISVTX) == 0;
    if (isForeign || isOpenToAll)
      return refusal(std::string(home).append(" lies in a folder that others may change: ").append(folder).append("."));
    if (folder == "/") return {};
  }
}

// What a login would set, and no more of the superuser's than the terminal's kind and the time zone. The owner may look
// at the memory that a process's variables came in, on a Mac: the superuser's may be secrets.
void takeEnvironmentOf(const HomeOwner& owner) {
  std::vector<std::pair<std::string, std::string>> kept;
  for (const char* name : {"TERM", "TZ"})
    if (const char* value = std::getenv(name)) kept.emplace_back(name, value);
  std::vector<std::string> names;
  for (char** each = environ; each && *each; ++each) {
    names.emplace_back(*each, std::strcspn(*each, "="));
    char* const rest = *each + names.back().size();
    std::memset(rest, '=', std::strlen(rest));
  }
  for (const std::string& name : names) unsetenv(name.c_str());
  for (const std::string assignment : kernel::fixedEnvironment()) {
    const std::size_t end = assignment.find('=');
    setenv(assignment.substr(0, end).c_str(), assignment.c_str() + end + 1, 1);
  }
  for (const auto& [name, value] : kept) setenv(name.c_str(), value.c_str(), 1);
  setenv("HOME", owner.user.home.c_str(), 1);
  setenv("USER", owner.name.c_str(), 1);
  setenv("LOGNAME", owner.name.c_str(), 1);
}

// Where the owner is logged in here, the session's bus lies there.
void takeRuntimeFolderOf(const HomeOwner& owner) {
  const std::string folder = "/run/user/" + std::to_string(owner.user.id);
  struct stat status {};
  if (lstat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == owner.user.id)
    setenv("XDG_RUNTIME_DIR", folder.c_str(), 1);
}

// A program that this process starts can be looked into by the owner, and must not reach the superuser's terminal.
Status leaveTerminal() {
  const Descriptor terminal(open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC));
  if (!terminal.valid()) return {};
  const auto earlier = std::signal(SIGHUP, SIG_IGN);  // which the first process of a session is sent
  const bool hasLeft = ioctl(terminal.get(), TIOCNOTTY) == 0;
  const int cause = errno;
  std::signal(SIGHUP, earlier);
  return hasLeft ? Status() : systemError("/dev/tty", cause);
}

}  // namespace

Result<HomeOwner> ownerOfHome(const std::string& home) {
  const auto status = folderStatus(home, lstat);
  if (!status) return status.error();
  const uid_t id = status->st_uid;
  if (id == 0) return refusal(home + " belongs to the superuser.", std::errc::operation_not_supported);
  char real[PATH_MAX];
  if (!realpath(home.c_str(), real)) return systemError(home);
  if (const Status safe = checkFoldersAbove(real, id); !safe) return safe.error();
  auto user = databaseUser(id);
  const auto name = databaseName(id);
  if (!user || !name) return refusal("Nobody knows user " + std::to_string(id) + ", who owns " + home + ".");
  user->home = real;
  return HomeOwner{std::move(*user), *name};
}

// The superuser's terminal, and whoever reads what this process says, are not to be reached by the owner's others.
Status becomeOwner(const HomeOwner& owner) {
  const User& user = owner.user;
  if (const Status left = leaveTerminal(); !left) return left;
  if (initgroups(owner.name.c_str(), user.group) != 0 || !kernel::becomeUser(user.id, user.group))
    return systemError(owner.name);
  takeEnvironmentOf(owner);
  takeRuntimeFolderOf(owner);
  umask(S_IWGRP | S_IWOTH);
  return {};
}

// What is the superuser's, or may be written to by others, can be somebody's home all the same.
Status checkIsNotOthers(const std::string& home) {
  const auto status = folderStatus(home, stat);
  if (!status) return status.error();
  if (status->st_uid == geteuid() || status->st_uid == 0 || access(home.c_str(), W_OK) == 0) return {};
  const std::string owner = databaseName(status->st_uid).value_or("user " + std::to_string(status->st_uid));
  return refusal(std::string(home)
                     .append(" belongs to ")
                     .append(owner)
                     .append(": run this as ")
                     .append(owner)
                     .append(", or as root."),
                 std::errc::permission_denied);
}

Status adoptHome(const std::string& home) {
  if (const auto status = folderStatus(home, stat); !status) return status.error();
  if (environmentFolder("HOME") == home) return {};
  setenv("HOME", home.c_str(), 1);
  // These belong to the home that was.
  for (const char* name : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME"}) unsetenv(name);
  return {};
}

}  // namespace vantory
