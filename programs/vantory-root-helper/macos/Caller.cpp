// Learns from the kernel who the caller is: the process's real user.
#include "programs/vantory-root-helper/macos/Caller.h"

#include <unistd.h>

#include <utility>

#include "platform/posix/processes/PasswordDatabase.h"

namespace vantory {

std::optional<HomeOwner> caller() {
  const uid_t id = getuid();
  const std::optional<User> user = id == 0 ? std::nullopt : databaseUser(id);
  if (!user || user->home.empty()) return std::nullopt;
  Result<HomeOwner> owner = ownerOfHome(user->home);
  if (!owner || owner->user.id != id) return std::nullopt;
  return std::move(*owner);
}

}  // namespace vantory
