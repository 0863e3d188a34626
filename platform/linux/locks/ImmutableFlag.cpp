// Reads and sets the flag on a descriptor.
#include "platform/linux/locks/ImmutableFlag.h"

#include <linux/fs.h>
#include <sys/ioctl.h>

#include "platform/posix/files/Errors.h"

namespace vantory {

Status setImmutable(int item, const std::string& path, bool immutable) {
  unsigned flags = 0;
  if (ioctl(item, FS_IOC_GETFLAGS, &flags) != 0) return systemError(path);
  const unsigned wanted = immutable ? flags | FS_IMMUTABLE_FL : flags & ~static_cast<unsigned>(FS_IMMUTABLE_FL);
  if (wanted != flags && ioctl(item, FS_IOC_SETFLAGS, &wanted) != 0) return systemError(path);
  return {};
}

}  // namespace vantory
