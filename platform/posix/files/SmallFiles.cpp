#include "platform/posix/files/SmallFiles.h"

#include <fcntl.h>
#include <sys/stat.h>

#include "platform/posix/files/Descriptor.h"
#include "platform/posix/files/Errors.h"

namespace vantory {

Result<std::string> readSmallFile(const std::string& path, std::size_t limit) {
  const Descriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  struct stat status {};
  if (!file.valid() || fstat(file.get(), &status) != 0) return systemError(path);
  if (!S_ISREG(status.st_mode)) return systemError(path, EINVAL);
  std::string text;
  char buffer[4096];
  for (;;) {
    const ssize_t count = uninterrupted([&] { return read(file.get(), buffer, sizeof buffer); });
    if (count < 0) return systemError(path);
    if (count == 0) return text;
    text.append(buffer, static_cast<std::size_t>(count));
    if (text.size() > limit) return systemError(path, EFBIG);
  }
}

}  // namespace vantory
