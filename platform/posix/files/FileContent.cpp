// Reads by position, so that whoever else reads the file is not disturbed.
#include "platform/posix/files/FileContent.h"

#include <unistd.h>

#include <algorithm>
#include <memory>
#include <string_view>

#include "base/Checksum.h"
#include "platform/posix/files/Descriptor.h"
#include "platform/posix/files/Errors.h"

namespace vantory {

// One byte more than expected is asked for: then a call that brings fewer has met the end, and no other need look.
bool addContent(int file, std::uint64_t size, Checksum& checksum, const std::function<bool(std::size_t bytes)>& step) {
  constexpr std::uint64_t kBufferBytes = 128 * 1024;
  const std::size_t length = std::min(size, kBufferBytes - 1) + 1;
  const auto buffer = std::make_unique_for_overwrite<char[]>(length);
  for (std::uint64_t position = 0;;) {
    const ssize_t count =
        uninterrupted([&] { return pread(file, buffer.get(), length, static_cast<off_t>(position)); });
    if (count <= 0) return count == 0;
    const auto bytes = static_cast<std::size_t>(count);
    checksum.add({buffer.get(), bytes});
    position += bytes;
    if (!step(bytes)) return false;
    if (bytes < length && position == size) return true;
  }
}

// Fewer bytes than asked for come at the end only, as far as files go.
Result<bool> haveSameContent(int file, const std::string& path, int other, const std::string& otherPath) {
  constexpr std::size_t kPiece = 256 * 1024;
  const auto left = std::make_unique_for_overwrite<char[]>(kPiece);
  const auto right = std::make_unique_for_overwrite<char[]>(kPiece);
  for (off_t position = 0;;) {
    const ssize_t count = uninterrupted([&] { return pread(file, left.get(), kPiece, position); });
    if (count < 0) return systemError(path);
    const ssize_t otherCount = uninterrupted([&] { return pread(other, right.get(), kPiece, position); });
    if (otherCount < 0) return systemError(otherPath);
    const auto bytes = static_cast<std::size_t>(count);
    if (count != otherCount || std::string_view(left.get(), bytes) != std::string_view(right.get(), bytes))
      return false;
    if (count == 0) return true;
    position += count;
  }
}

}  // namespace vantory
