#include "services/Paths.h"

#include <algorithm>

namespace vantory::paths {

namespace {

std::string_view withoutTrailingSlashes(std::string_view path) {
  while (path.size() > 1 && path.ends_with('/')) path.remove_suffix(1);
  return path;
}

std::string_view lastPart(std::string_view path) {
  path = withoutTrailingSlashes(path);
  return path == "/" ? path : path.substr(path.rfind('/') + 1);
}

// Where the extension's dot stands in a last component; npos when it has none.
std::size_t extensionDot(std::string_view name) {
  const std::size_t dot = name.rfind('.');
  return dot == 0 || dot + 1 == name.size() ? std::string_view::npos : dot;
}

}  // namespace

std::string join(std::string_view folder, std::string_view component) {
  std::string path(withoutTrailingSlashes(folder));
  while (component.starts_with('/')) component.remove_prefix(1);
  if (!path.empty() && path != "/" && !component.empty()) path += '/';
  path += component;
  return std::string(withoutTrailingSlashes(path));
}

std::string lastComponent(std::string_view path) {
  return std::string(lastPart(path));
}

std::string parent(std::string_view path) {
  path = withoutTrailingSlashes(path);
  const std::size_t slash = path.rfind('/');
  if (slash == std::string_view::npos) return {};
  return std::string(withoutTrailingSlashes(path.substr(0, slash + 1)));
}

std::string extension(std::string_view path) {
  const std::string_view name = lastPart(path);
  const std::size_t dot = extensionDot(name);
  return dot == std::string_view::npos ? std::string() : std::string(name.substr(dot + 1));
}

std::string withoutExtension(std::string_view path) {
  path = withoutTrailingSlashes(path);
  const std::string_view name = lastPart(path);
  const std::size_t dot = extensionDot(name);
  if (dot != std::string_view::npos) path.remove_suffix(name.size() - dot);
  return std::string(path);
}

std::vector<std::string> components(std::string_view path) {
  std::vector<std::string> parts;
  if (path.starts_with('/')) parts.emplace_back("/");
  for (std::size_t start = path.find_first_not_of('/'); start != std::string_view::npos;) {
    const std::size_t end = std::min(path.find('/', start), path.size());
    parts.emplace_back(path.substr(start, end - start));
    start = path.find_first_not_of('/', end);
    if (start == std::string_view::npos && end < path.size()) parts.emplace_back("/");
  }
  return parts;
}

bool isWithin(std::string_view path, std::string_view folder) {
  const std::vector<std::string> parts = components(withoutTrailingSlashes(path));
  const std::vector<std::string> above = components(withoutTrailingSlashes(folder));
  const auto climbs = [](const std::vector<std::string>& list) { return std::ranges::count(list, "..") > 0; };
  if (above.empty() || above.size() > parts.size() || climbs(parts) || climbs(above)) return false;
  return std::equal(above.begin(), above.end(), parts.begin());
}

}  // namespace vantory::paths
