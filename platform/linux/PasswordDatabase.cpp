#include "platform/linux/PasswordDatabase.h"

#include <pwd.h>

#include <cerrno>
#include <charconv>
#include <vector>

#include "platform/linux/EnvironmentFolder.h"

namespace vantory {

std::optional<std::string> usableHome(std::optional<std::string> folder) {
  if (folder && *folder == "/") return std::nullopt;
  return folder;
}

std::optional<User> databaseUser(uid_t id) {
  std::vector<char> buffer(1024);
  passwd entry{};
  passwd* found = nullptr;
  int failure = 0;
  while ((failure = getpwuid_r(id, &entry, buffer.data(), buffer.size(), &found)) == ERANGE || failure == EINTR)
    if (failure == ERANGE) buffer.resize(buffer.size() * 2);
  if (!found) return std::nullopt;
  const std::string_view home = entry.pw_dir ? entry.pw_dir : "";
  return User{entry.pw_name, entry.pw_uid, entry.pw_gid, usableHome(normalisedFolder(home)).value_or("")};
}

std::optional<User> userWithId(std::string_view digits) {
  uid_t id = 0;
  const char* end = digits.data() + digits.size();
  const auto [rest, failure] = std::from_chars(digits.data(), end, id);
  if (digits.empty() || rest != end || failure != std::errc()) return std::nullopt;
  return databaseUser(id);
}

}  // namespace vantory
