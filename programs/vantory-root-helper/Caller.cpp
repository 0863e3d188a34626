#include "programs/vantory-root-helper/Caller.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

#include "platform/posix/processes/PasswordDatabase.h"

namespace vantory {
namespace {

// The kernel remembers who made the socket.
bool speaksThroughStandardInput(const User& user) {
  ucred peer{};
  socklen_t size = sizeof peer;
  return getsockopt(STDIN_FILENO, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && size == sizeof peer &&
         peer.uid == user.id;
}

bool ownsHome(const User& user) {
  struct stat status;
  return !user.home.empty() && stat(user.home.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
         status.st_uid == user.id;
}

}  // namespace

std::optional<User> caller() {
  const char* digits = std::getenv("PKEXEC_UID");
  std::optional<User> user = userWithId(digits ? digits : "");
  if (!user || user->id == 0 || !speaksThroughStandardInput(*user) || !ownsHome(*user)) return std::nullopt;
  return user;
}

}  // namespace vantory
