// How unfinished work is called.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

namespace vantory {

// The hidden name under which something that will be called `finalName` is put together in the same folder. It is the
// same at every attempt, so that the next one finds and clears what a killed one left; `attempt` tells apart several
// that are under way at once.
inline std::string stagingName(std::string_view finalName, int attempt = 0) {
  std::uint64_t hash =
      14695981039346656037ULL;  // FNV-1a: the final name itself may already be as long as a name can be
  for (const char byte : finalName) hash = (hash ^ static_cast<unsigned char>(byte)) * 1099511628211ULL;
  char name[64];
  std::snprintf(name, sizeof name, ".vantory-%016llx-%d.partial", static_cast<unsigned long long>(hash), attempt);
  return name;
}

}  // namespace vantory
