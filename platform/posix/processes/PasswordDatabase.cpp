// Looks users up by name and by number.
#include "platform/posix/processes/PasswordDatabase.h"

#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <vector>

#include "platform/posix/files/EnvironmentFolder.h"

namespace vantory {

namespace {

// What the database says of a user.
class Entry {
 public:
  // The buffer grows until the entry fits.
  explicit Entry(uid_t id) {
    int failure = 0;
    while ((failure = getpwuid_r(id, &entry_, buffer_.data(), buffer_.size(), &found_)) == ERANGE || failure == EINTR)
      if (failure == ERANGE) buffer_.resize(buffer_.size() * 2);
  }
  explicit operator bool() const { return found_ != nullptr; }
  const passwd* operator->() const { return found_; }

 private:
  std::vector<char> buffer_ = std::vector<char>(1024);
  passwd entry_{};
  passwd* found_ = nullptr;
};

}  // namespace

std::optional<std::string> usableHome(std::optional<std::string> folder) {
  if (folder && *folder == "/") return std::nullopt;
  return folder;
}

std::optional<std::string> homeBesides(const std::optional<User>& user) {
  auto home = usableHome(environmentFolder("HOME"));
  if (!home || (user && user->home == *home)) return std::nullopt;
  const auto own = databaseUser(getuid());
  return own && own->home == *home ? std::nullopt : home;
}

std::optional<User> databaseUser(uid_t id) {
  const Entry entry(id);
  if (!entry) return std::nullopt;
  const std::string_view home = entry->pw_dir ? entry->pw_dir : "";
  return User{entry->pw_uid, entry->pw_gid, usableHome(normalisedFolder(home)).value_or("")};
}

std::optional<std::string> databaseName(uid_t id) {
  const Entry entry(id);
  if (!entry) return std::nullopt;
  return entry->pw_name;
}

std::optional<User> userWithId(std::string_view digits) {
  uid_t id = 0;
  const char* end = digits.data() + digits.size();
  const auto [rest, failure] = std::from_chars(digits.data(), end, id);
  if (digits.empty() || rest != end || failure != std::errc()) return std::nullopt;
  return databaseUser(id);
}

}  // namespace vantory
