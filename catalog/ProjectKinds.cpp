// Which kind of project a file is.
#include "catalog/ProjectKinds.h"

#include <algorithm>

#include "base/Paths.h"
#include "base/Text.h"

namespace vantory {

const ProjectKind* projectKindOf(const std::string& path) {
  const auto* kind = std::ranges::find(kProjectKinds, lowerCased(paths::extension(path)), &ProjectKind::extension);
  return kind == kProjectKinds.end() ? nullptr : kind;
}

std::vector<std::string> projectExtensions() {
  std::vector<std::string> extensions;
  extensions.reserve(kProjectKinds.size());
  for (const ProjectKind& kind : kProjectKinds) extensions.emplace_back(kind.extension);
  return extensions;
}

}  // namespace vantory
