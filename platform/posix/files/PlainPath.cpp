#include "platform/posix/files/PlainPath.h"

#include <algorithm>

namespace vantory {

std::optional<std::string> plainPath(std::string_view path) {
  if (!path.starts_with('/')) return std::nullopt;
  std::string plain;
  for (std::size_t start = 0, end = 0; start < path.size(); start = end + 1) {
    end = std::min(path.find('/', start), path.size());
    const std::string_view component = path.substr(start, end - start);
    if (component == "..") return std::nullopt;
    if (!component.empty() && component != ".") plain.append("/").append(component);
  }
  return plain.empty() ? "/" : plain;
}

}  // namespace vantory
