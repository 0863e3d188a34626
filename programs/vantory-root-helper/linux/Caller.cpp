// Learns from the kernel and pkexec who the caller is.
#include "programs/vantory-root-helper/linux/Caller.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <utility>

#include "platform/posix/processes/PasswordDatabase.h"

namespace vantory {
namespace {

// The kernel remembers who made the socket; -1 for another user's process.
pid_t processBehindStandardInput(const User& user) {
  ucred peer{};
  socklen_t size = sizeof peer;
  const bool known = getsockopt(STDIN_FILENO, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && size == sizeof peer;
  return known && peer.uid == user.id ? peer.pid : -1;
}

// A home that is somebody else's would open that user's files to the caller.
bool ownsHome(const User& user) {
  struct stat status;
  return !user.home.empty() && stat(user.home.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
         status.st_uid == user.id;
}

}  // namespace

std::optional<Caller> caller() {
  const char* digits = std::getenv("PKEXEC_UID");
  std::optional<User> user = userWithId(digits ? digits : "");
  if (!user || user->id == 0 || !ownsHome(*user)) return std::nullopt;
  const pid_t process = processBehindStandardInput(*user);
  if (process <= 0) return std::nullopt;
  return Caller{std::move(*user), process};
}

}  // namespace vantory
