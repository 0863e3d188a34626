// Reads by position, so that whoever else reads the file is not disturbed.
#include "platform/posix/files/FileContent.h"

#include <unistd.h>

#include <memory>

#include "base/Checksum.h"
#include "platform/posix/files/Descriptor.h"

namespace vantory {

bool addContent(int file, Checksum& checksum, const std::function<bool(std::size_t bytes)>& step) {
  constexpr std::size_t kBufferBytes = 128 * 1024;
  const auto buffer = std::make_unique_for_overwrite<char[]>(kBufferBytes);
  for (off_t position = 0;;) {
    const ssize_t count = uninterrupted([&] { return pread(file, buffer.get(), kBufferBytes, position); });
    if (count <= 0) return count == 0;
    checksum.add({buffer.get(), static_cast<std::size_t>(count)});
    position += count;
    if (!step(static_cast<std::size_t>(count))) return false;
  }
}

}  // namespace vantory
