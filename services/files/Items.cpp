// Asks the file system for items and names.
#include "services/files/Items.h"

#include <utility>

#include "base/Paths.h"
#include "platform/FileSystem.h"
#include "services/Runtime.h"

namespace vantory {

bool itemExists(const std::string& path) {
  return Runtime::current().platform().files.info(path, Links::DoNotFollow).ok();
}

// With a slash behind its name a file would seem to be missing.
bool isItemMissing(const std::string& path) {
  const std::string item(paths::withoutTrailingSlashes(path));
  const auto info = Runtime::current().platform().files.info(item, Links::DoNotFollow);
  return !info && meansMissing(info.error());
}

std::vector<std::string> namesIn(const std::string& folder) {
  std::vector<std::string> names;
  auto entries = Runtime::current().platform().files.list(folder, Detail::Names);
  if (!entries) return names;
  names.reserve(entries->size());
  for (DirectoryEntry& entry : *entries) names.push_back(std::move(entry.name));
  return names;
}

}  // namespace vantory
