// The attribute that keeps a file or folder from being changed, renamed or removed.
#pragma once

#include <sys/stat.h>

#include <string>

#include "base/Result.h"

namespace vantory {

// Whether an item can bear the flag: links, devices and pipes cannot.
inline bool canBeImmutable(const struct stat& status) {
  return S_ISREG(status.st_mode) || S_ISDIR(status.st_mode);
}

// Sets or clears the flag of an open file or folder and leaves its other flags alone. Fails with
// operation_not_permitted where this process may not, or the item is somebody else's. `path` is for the error's text.
Status setImmutable(int item, const std::string& path, bool immutable);

}  // namespace vantory
