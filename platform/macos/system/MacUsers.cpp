// Asks the directory, the environment and the console.
#include "platform/macos/system/MacUsers.h"

#include <unistd.h>

#include "platform/macos/darwin/Darwin.h"
#include "platform/posix/files/EnvironmentFolder.h"
#include "platform/posix/processes/PasswordDatabase.h"

namespace vantory {

namespace {

// Without a home there are no files to handle.
std::optional<User> withHome(std::optional<User> user) {
  if (!user || user->home.empty()) return std::nullopt;
  return user;
}

// Accounts of the system, such as that of the assistant that sets a machine up, begin with an underscore.
std::optional<User> userAtConsole() {
  const std::optional<uid_t> owner = darwin::consoleOwner();
  if (!owner || *owner == 0 || databaseName(*owner).value_or("_").starts_with('_')) return std::nullopt;
  return withHome(databaseUser(*owner));
}

// Normally the environment says it all, and no directory is asked, which may take long.
std::optional<User> userOfProcess(bool isSuperuser) {
  const auto home = isSuperuser ? std::nullopt : usableHome(environmentFolder("HOME"));
  return home ? User{getuid(), getgid(), *home} : withHome(databaseUser(getuid()));
}

}  // namespace

bool MacUsers::isSuperuser() const {
  return become_ || getuid() == 0;
}

void MacUsers::becomeSuperuser() {
  if (setuid(0) != 0) return;  // stays who it was
}

std::optional<User> MacUsers::processUser() const {
  std::call_once(processUserFound_, [this] { processUser_ = userOfProcess(!become_ && isSuperuser()); });
  return processUser_;
}

std::optional<User> MacUsers::consoleUser() const {
  std::call_once(consoleUserFound_, [this] { consoleUser_ = become_ ? become_ : userAtConsole(); });
  return consoleUser_;
}

std::optional<std::string> MacUsers::disregardedHome() const {
  return isSuperuser() ? homeBesides(consoleUser()) : std::nullopt;
}

std::string MacUsers::nameOf(const User& user) const {
  return databaseName(user.id).value_or(std::to_string(user.id));
}

}  // namespace vantory
