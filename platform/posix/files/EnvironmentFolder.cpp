#include "platform/posix/files/EnvironmentFolder.h"

#include <cstdlib>
#include <filesystem>

namespace vantory {

std::optional<std::string> normalisedFolder(std::string_view text) {
  if (!text.starts_with('/')) return std::nullopt;
  std::string folder = std::filesystem::path(text).lexically_normal().native();
  if (folder.size() > 1 && folder.back() == '/') folder.pop_back();
  return folder;
}

std::optional<std::string> environmentFolder(const char* variable) {
  const char* value = std::getenv(variable);
  if (!value) return std::nullopt;
  return normalisedFolder(value);
}

}  // namespace vantory
