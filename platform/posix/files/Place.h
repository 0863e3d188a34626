// Where an item lies, as the system calls want it.
#pragma once

#include <fcntl.h>

#include <functional>
#include <string>

#include "base/Result.h"
#include "platform/posix/files/Descriptor.h"

namespace vantory {

// A name in an open folder; with no folder open the name is a whole path.
struct Place {
  Descriptor folder;
  std::string name;
  bool isInHome = false;  // of the user whom the superuser works for

  int at() const { return folder.valid() ? folder.get() : AT_FDCWD; }
};

// How deep a folder may nest to be copied or deleted. A deeper one is refused where it goes deeper.
inline constexpr int kDeepestFolder = 256;

// Asked before an item is deleted, or a folder entered for that: a failure ends the deletion there. `path` is for
// messages.
using RemovalCheck = std::function<Status(int folder, const std::string& name, const std::string& path)>;

}  // namespace vantory
