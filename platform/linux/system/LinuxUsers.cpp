// Finds out who sits at the machine and who runs this process.
#include "platform/linux/system/LinuxUsers.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>
#include <utility>

#include "platform/posix/files/EnvironmentFolder.h"
#include "platform/posix/files/SmallFiles.h"
#include "platform/posix/processes/PasswordDatabase.h"

namespace vantory {

namespace {

bool exists(const std::string& path) {
  return access(path.c_str(), F_OK) == 0;
}

// Without a home there are no files to handle.
std::optional<User> withHome(std::optional<User> user) {
  if (!user || user->home.empty()) return std::nullopt;
  return user;
}

// Whoever gained the superuser's rights by pkexec or sudo.
std::optional<User> invokingUser() {
  for (const char* variable : {"PKEXEC_UID", "SUDO_UID"}) {
    const char* digits = std::getenv(variable);
    if (!digits) continue;
    if (std::optional<User> user = userWithId(digits)) return user;
  }
  return std::nullopt;
}

bool ownsFolder(uid_t user, const std::string& path) {
  struct stat info {};
  return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode) && info.st_uid == user;
}

// The process's user with the home of the password database.
User ownUser() {
  const uid_t id = getuid();
  return databaseUser(id).value_or(User{id, getgid(), ""});
}

std::optional<User> ownUserWithTrustedHome() {
  User user = ownUser();
  const std::optional<std::string> home = usableHome(environmentFolder("HOME"));
  if (home && ownsFolder(user.id, *home)) user.home = *home;
  return withHome(std::move(user));
}

// Normally the environment says it all, and no database is asked.
std::optional<User> ownUserWithAnyHome() {
  if (const auto home = usableHome(environmentFolder("HOME"))) return withHome(User{getuid(), getgid(), *home});
  return withHome(ownUser());
}

}  // namespace

LinuxUsers::LinuxUsers(std::string systemdState) : systemdState_(std::move(systemdState)) {}

bool LinuxUsers::isSuperuser() const {
  return getuid() == 0;
}

void LinuxUsers::becomeSuperuser() {
  if (setuid(0) != 0) return;  // stays who it was
}

// The superuser's HOME is believed only where no login service could know better.
std::optional<User> LinuxUsers::processUser() const {
  std::call_once(processUserFound_, [this] {
    if (!isSuperuser())
      processUser_ = ownUserWithAnyHome();
    else
      processUser_ = loginServiceAnswers() ? withHome(ownUser()) : ownUserWithTrustedHome();
  });
  return processUser_;
}

std::optional<User> LinuxUsers::consoleUser() const {
  std::call_once(consoleUserFound_, [this] {
    if (loginServiceAnswers())
      consoleUser_ = activeUser();
    else if (std::optional<User> user = invokingUser())
      consoleUser_ = withHome(std::move(user));
    else
      consoleUser_ = ownUserWithTrustedHome();
  });
  return consoleUser_;
}

// The service writes the state of seat0 as soon as it runs. A machine that systemd runs is expected to have it and
// counts as answering while it has not started yet; the folder alone says nothing, container images ship it.
bool LinuxUsers::loginServiceAnswers() const {
  const std::string seats = systemdState_ + "/seats";
  return exists(seats + "/seat0") || (exists(seats) && exists(systemdState_ + "/system"));
}

// Read from the state files, as the service's own client library does: no library to load, and tests can move them.
std::optional<User> LinuxUsers::activeUser() const {
  const std::string session = assignedValue(systemdState_ + "/seats/seat0", "ACTIVE").value_or("");
  if (session.empty() || session.find('/') != std::string::npos) return std::nullopt;
  const std::string state = systemdState_ + "/sessions/" + session;
  // "user" and its kinds, such as "user-early"; not "greeter", "lock-screen" or "background".
  if (!assignedValue(state, "CLASS").value_or("").starts_with("user")) return std::nullopt;
  const std::optional<User> user = userWithId(assignedValue(state, "UID").value_or(""));
  if (user && nameOf(*user) == "loginwindow") return std::nullopt;
  return withHome(user);
}

std::optional<std::string> LinuxUsers::disregardedHome() const {
  return isSuperuser() ? homeBesides(consoleUser()) : std::nullopt;
}

std::string LinuxUsers::nameOf(const User& user) const {
  return databaseName(user.id).value_or(std::to_string(user.id));
}

}  // namespace vantory
