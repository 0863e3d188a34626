// Who runs the program and for whom.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace vantory {

struct User {
  std::uint32_t id = 0;
  std::uint32_t group = 0;
  std::string home;  // absolute, no trailing slash
};

class Users {
 public:
  virtual ~Users() = default;

  // True when the superuser started the process, also where it goes on as the user that it works for.
  virtual bool isSuperuser() const = 0;
  // Takes the superuser's identity where the process may, else changes nothing. Called before anything else is asked.
  virtual void becomeSuperuser() = 0;
  // The process's own user; none when it has no home folder.
  virtual std::optional<User> processUser() const = 0;
  // The user at the console; none when nobody is.
  virtual std::optional<User> consoleUser() const = 0;
  // What HOME names in the superuser's environment where the work is done in another home, which it does not say; none
  // elsewhere.
  virtual std::optional<std::string> disregardedHome() const = 0;
  // The user's name, or the id in digits where the machine knows none. May ask over the network.
  virtual std::string nameOf(const User& user) const = 0;
};

}  // namespace vantory
