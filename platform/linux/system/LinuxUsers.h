// Users by the password database, the environment and the login service.
#pragma once

#include <mutex>

#include "platform/Users.h"

namespace vantory {

// The user at the console is that of the active session of the login service's seat0; a greeter counts as nobody.
// Where no login service answers it is whoever called pkexec or sudo, else the process's own user.
//
// The superuser's process takes nothing from the environment but PKEXEC_UID, SUDO_UID and a HOME that belongs to it,
// and only where no login service answers. Each answer is found when first asked for, and kept. Any thread.
class LinuxUsers : public Users {
 public:
  // `systemdState` holds the state files of the login service.
  explicit LinuxUsers(std::string systemdState = "/run/systemd");

  bool isSuperuser() const override;
  void becomeSuperuser() override;
  std::optional<User> processUser() const override;
  std::optional<User> consoleUser() const override;
  std::optional<std::string> disregardedHome() const override;
  std::string nameOf(const User& user) const override;

 private:
  bool loginServiceAnswers() const;
  std::optional<User> activeUser() const;

  const std::string systemdState_;
  mutable std::once_flag processUserFound_;
  mutable std::optional<User> processUser_;
  mutable std::once_flag consoleUserFound_;
  mutable std::optional<User> consoleUser_;
};

}  // namespace vantory
