// Maps what lies in a backup to where it belongs.
#include "catalog/BackupPlace.h"

#include <algorithm>
#include <string_view>

#include "base/Paths.h"
#include "services/QWLocalPaths.h"

namespace vantory {

std::optional<std::string> livePathOf(const std::string& path, const std::string& backupPath) {
  const std::string_view placeholder = kHomePlaceholder;
  std::string destination = path.substr(std::min(backupPath.size(), path.size()));
  // A plain prefix on purpose: of "/Users/username", too, "/Users/user" is replaced.
  if (destination.starts_with(placeholder)) {
    const std::optional<std::string> home = QWLocalPaths::userDirectory();
    if (!home || destination.size() == placeholder.size()) return std::nullopt;
    destination = paths::join(*home, std::string_view(destination).substr(placeholder.size()));
  }
  const std::vector<std::string_view> parts = paths::components(destination);
  if (!destination.starts_with('/') || std::ranges::count(parts, "..") > 0) return std::nullopt;
  return destination;
}

}  // namespace vantory
