// Writes to open files.
#include "platform/posix/files/OpenFiles.h"

#include <unistd.h>

#include "platform/posix/files/Errors.h"

namespace vantory {

Status writeAll(int file, std::string_view& bytes, const std::string& path) {
  while (!bytes.empty()) {
    const ssize_t count = uninterrupted([&] { return ::write(file, bytes.data(), bytes.size()); });
    if (count < 0) return systemError(path);
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return {};
}

}  // namespace vantory
