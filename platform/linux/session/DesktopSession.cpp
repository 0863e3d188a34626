// Starts programs in the session of the user at the screen.
#include "platform/linux/session/DesktopSession.h"

#include <sys/stat.h>

#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Users.h"
#include "platform/posix/files/EnvironmentFolder.h"
#include "platform/posix/files/Errors.h"
#include "platform/posix/processes/HelperProgram.h"

namespace vantory {

namespace {

constexpr const char* kProgram = "vantory-desktop";

// The name itself, not what it may point to.
bool isSocket(const std::string& path) {
  struct stat info {};
  return lstat(path.c_str(), &info) == 0 && S_ISSOCK(info.st_mode);
}

// The folder that the login service makes for a user who is logged in.
std::optional<std::string> runtimeFolder(const User& user) {
  const std::string path = "/run/user/" + std::to_string(user.id);
  struct stat info {};
  if (lstat(path.c_str(), &info) != 0 || !S_ISDIR(info.st_mode) || info.st_uid != user.id) return std::nullopt;
  return path;
}

// What can be known of the user's session without looking into other processes.
std::vector<std::string> environmentOf(const User& user, const std::string& name) {
  std::vector<std::string> environment = {"HOME=" + user.home, "USER=" + name, "LOGNAME=" + name,
                                          "PATH=/usr/local/bin:/usr/bin:/bin", "LANG=C.UTF-8"};
  if (const std::optional<std::string> folder = runtimeFolder(user)) {
    environment.push_back("XDG_RUNTIME_DIR=" + *folder);
    environment.push_back("DBUS_SESSION_BUS_ADDRESS=unix:path=" + *folder + "/bus");
  }
  return environment;
}

}  // namespace

// By setpriv the superuser's rights are gone before the helper begins. Its user may look into it, who need not be the
// one at the terminal.
Result<ChildProgram> desktopHelperProgram(const Users& users) {
  const std::string program = helperProgram(kProgram);
  if (program.empty()) return errorWithText(std::errc::no_such_file_or_directory, kProgram, "not installed");
  if (!users.isSuperuser()) return ChildProgram{.path = program, .environment = ownEnvironment(), .isApart = true};
  const std::optional<User> user = users.consoleUser();
  if (!user) return errorWithText(std::errc::no_such_process, kProgram, "nobody is logged in at the console");
  return ChildProgram{.path = "/usr/bin/setpriv",
                      .arguments = {"--reuid=" + std::to_string(user->id), "--regid=" + std::to_string(user->group),
                                    "--init-groups", "--inh-caps=-all", "--", program},
                      .environment = environmentOf(*user, users.nameOf(*user)),
                      .isApart = true};
}

bool hasSessionBus() {
  const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
  if (address && *address != '\0') return true;
  const std::optional<std::string> folder = environmentFolder("XDG_RUNTIME_DIR");
  return folder && isSocket(*folder + "/bus");
}

bool hasSessionBus(const Users& users) {
  if (!users.isSuperuser()) return hasSessionBus();
  const std::optional<User> user = users.consoleUser();
  const std::optional<std::string> folder = user ? runtimeFolder(*user) : std::nullopt;
  return folder && isSocket(*folder + "/bus");
}

}  // namespace vantory
