// Brings paths into one form.
#include "platform/posix/files/Names.h"

#include "base/Paths.h"

namespace vantory {

// Two paths to one item that differ only in slashes and dots become equal.
std::optional<std::string> plainPath(std::string_view path) {
  if (!path.starts_with('/')) return std::nullopt;
  std::string plain;
  for (const std::string_view component : paths::components(path)) {
    if (component == "..") return std::nullopt;
    if (component != "/" && component != ".") plain.append("/").append(component);
  }
  return plain.empty() ? "/" : plain;
}

}  // namespace vantory
