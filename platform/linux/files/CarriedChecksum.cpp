// Reads and sets the attributes, and reads content for a checksum.
#include "platform/linux/files/CarriedChecksum.h"

#include <sys/xattr.h>

#include <memory>

#include "base/Checksum.h"
#include "platform/posix/files/Descriptor.h"

namespace vantory {

std::optional<std::string> carriedText(int file, const char* attribute) {
  char value[64];
  const ssize_t length = fgetxattr(file, attribute, value, sizeof value);
  if (length >= 0) return std::string(value, static_cast<std::size_t>(length));
  if (errno == ENODATA || errno == EOPNOTSUPP) return std::nullopt;
  return "";
}

bool carryText(int file, const char* attribute, const std::string& text) {
  return fsetxattr(file, attribute, text.data(), text.size(), 0) == 0;
}

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
