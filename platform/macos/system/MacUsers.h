// Users by the directory of the machine, and who sits at its screen.
#pragma once

#include <mutex>
#include <optional>
#include <utility>

#include "platform/Users.h"

namespace vantory {

// The user at the console is who owns it; at the login window, and while the machine is set up, that is nobody. The
// superuser's process takes nothing from the environment. Each answer is found when first asked for, and kept. Any
// thread.
class MacUsers : public Users {
 public:
  // For a process that the superuser started and that has become the user at the console, with that user.
  explicit MacUsers(std::optional<User> become = std::nullopt) : become_(std::move(become)) {}

  bool isSuperuser() const override;
  void becomeSuperuser() override;
  std::optional<User> processUser() const override;
  std::optional<User> consoleUser() const override;
  std::optional<std::string> disregardedHome() const override;
  std::string nameOf(const User& user) const override;

 private:
  const std::optional<User> become_;
  mutable std::once_flag processUserFound_;
  mutable std::optional<User> processUser_;
  mutable std::once_flag consoleUserFound_;
  mutable std::optional<User> consoleUser_;
};

}  // namespace vantory
