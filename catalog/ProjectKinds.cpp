// Which kind of project a file is.
#include "catalog/ProjectKinds.h"

#include <algorithm>

#include "base/Paths.h"
#include "base/Text.h"
#include "catalog/AppDefinition.h"

namespace vantory {

const ProjectKind* projectKindOf(const std::string& path) {
  const auto* kind = std::ranges::find(kProjectKinds, lowerCased(paths::extension(path)), &ProjectKind::extension);
  return kind == kProjectKinds.end() ? nullptr : kind;
}

std::vector<std::string> applicationsOfProject(const std::string& path, const AppList& apps) {
  if (const ProjectKind* kind = projectKindOf(path)) return {std::string(kind->application)};
  const std::string extension = lowerCased(paths::extension(path));
  for (const auto& app : apps)
    if (app->defined() && std::ranges::count(app->defined()->projects, extension) > 0) return app->identifiers();
  return {};
}

std::vector<std::string> projectExtensions(const AppList& apps) {
  std::vector<std::string> extensions;
  extensions.reserve(kProjectKinds.size());
  for (const ProjectKind& kind : kProjectKinds) extensions.emplace_back(kind.extension);
  for (const auto& app : apps)
    if (app->defined())
      extensions.insert(extensions.end(), app->defined()->projects.begin(), app->defined()->projects.end());
  return extensions;
}

}  // namespace vantory
