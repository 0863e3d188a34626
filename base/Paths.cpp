// Takes paths apart and puts them together, as text.
#include "base/Paths.h"

#include <algorithm>
#include <filesystem>

namespace vantory::paths {

namespace {

std::string_view lastPart(std::string_view path) {
  path = withoutTrailingSlashes(path);
  return path == "/" ? path : path.substr(path.rfind('/') + 1);
}

// Where the extension's dot stands in a last component; npos when it has none.
std::size_t extensionDot(std::string_view name) {
  const std::size_t dot = name.rfind('.');
  return dot == 0 || dot + 1 == name.size() ? std::string_view::npos : dot;
}

// The first component of a path, which loses it with all slashes up to the next one.
std::string_view takeComponent(std::string_view& path) {
  const std::size_t end = path.starts_with('/') ? 1 : std::min(path.find('/'), path.size());
  const std::string_view component = path.substr(0, end);
  path.remove_prefix(std::min(path.find_first_not_of('/', end), path.size()));
  return component;
}

}  // namespace

std::string_view withoutTrailingSlashes(std::string_view path) {
  while (path.size() > 1 && path.ends_with('/')) path.remove_suffix(1);
  return path;
}

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

std::string normalized(std::string_view path) {
  // Most paths are so already, which is told sooner than they are taken to pieces.
  constexpr auto kNowhere = std::string_view::npos;
  if (path.starts_with('/') && !path.ends_with('/') && path.find("//") == kNowhere && path.find("/.") == kNowhere)
    return std::string(path);
  return std::string(withoutTrailingSlashes(std::filesystem::path(path).lexically_normal().native()));
}

std::string absolute(std::string_view path, std::string_view folder) {
  return normalized(path.starts_with('/') ? std::string(path) : join(folder, path));
}

std::vector<std::string_view> components(std::string_view path) {
  std::vector<std::string_view> parts;
  parts.reserve(static_cast<std::size_t>(std::ranges::count(path, '/')) + 1);
  const bool endsWithSlash = path.ends_with('/');
  while (!path.empty()) parts.push_back(takeComponent(path));
  if (endsWithSlash && parts.back() != "/") parts.emplace_back("/");
  return parts;
}

bool isWithin(std::string_view path, std::string_view folder) {
  if (folder.empty()) return false;
  while (!folder.empty()) {
    const std::string_view part = takeComponent(path);
    if (part != takeComponent(folder) || part == "..") return false;
  }
  while (!path.empty())
    if (takeComponent(path) == "..") return false;
  return true;
}

}  // namespace vantory::paths
