// Reads and sets the attributes.
#include "platform/linux/files/CarriedChecksum.h"

#include <sys/xattr.h>

#include <cerrno>

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

}  // namespace vantory
