// Reads folders from variables, and normalises them.
#include "platform/posix/files/EnvironmentFolder.h"

#include <cstdlib>

#include "base/Paths.h"

namespace vantory {

// A relative folder would depend on where the process was started.
std::optional<std::string> normalisedFolder(std::string_view text) {
  if (!text.starts_with('/')) return std::nullopt;
  return paths::normalized(text);
}

std::optional<std::string> environmentFolder(const char* variable) {
  const char* value = std::getenv(variable);
  if (!value) return std::nullopt;
  return normalisedFolder(value);
}

}  // namespace vantory
