#include "programs/vantory-lock-helper/LockService.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/linux/files/FileRights.h"
#include "platform/linux/locks/ImmutableFlag.h"
#include "platform/linux/locks/LockProtocol.h"
#include "platform/posix/files/Errors.h"

namespace vantory {

namespace {

Status checkOwn(int item, const std::string& path) {
  struct stat status;
  if (fstat(item, &status) != 0) return systemError(path);
  if (!canBeImmutable(status)) return systemError(path, EINVAL);
  if (status.st_uid != getuid()) return systemError(path, EPERM);
  return {};
}

// Looks before it opens, because opening a pipe or a device is an act already; and looks again at what it has opened,
// because that may be something else by then.
Result<Descriptor> openOwn(const std::string& path) {
  static const Descriptor root(open("/", O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!path.starts_with('/')) return systemError(path, EINVAL);
  Descriptor item;
  for (const int flags : {O_PATH, O_RDONLY | O_NONBLOCK | O_NOCTTY}) {
    item = openBeneath(root.get(), path.substr(1), flags | O_NOFOLLOW);
    if (!item.valid()) return systemError(path);
    if (const Status own = checkOwn(item.get(), path); !own) return own.error();
  }
  return item;
}

Status setLocked(const std::string& path, bool locked) {
  const Result<Descriptor> item = openOwn(path);
  return item ? setImmutable(item->get(), path, locked) : item.error();
}

}  // namespace

std::optional<Message> serveLockRequest(const Message& request) {
  const bool locks = request.front() == kLock;
  if (!locks && request.front() != kUnlock) return std::nullopt;
  if (request.size() < 2 || request.size() - 1 > kMostPathsAtOnce) return std::nullopt;
  Message answer;
  for (std::size_t i = 1; i < request.size(); ++i) {
    const Status done = setLocked(request[i], locks);
    answer.push_back(std::to_string(done ? 0 : static_cast<int>(done.error().code)));
  }
  return answer;
}

}  // namespace vantory
