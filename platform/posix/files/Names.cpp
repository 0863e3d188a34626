// Shortens names for staging, and brings paths into one form.
#include "platform/posix/files/Names.h"

#include <cstdint>
#include <cstdio>

#include "base/Paths.h"

namespace vantory {

std::string stagingName(std::string_view finalName, int attempt) {
  std::uint64_t hash =
      14695981039346656037ULL;  // FNV-1a: the final name itself may already be as long as a name can be
  for (const char byte : finalName) hash = (hash ^ static_cast<unsigned char>(byte)) * 1099511628211ULL;
  char name[64];
  std::snprintf(name, sizeof name, ".vantory-%016llx-%d.partial", static_cast<unsigned long long>(hash), attempt);
  return name;
}

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
