// What tells whether a file or folder is still the one that a task left.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/FileSystem.h"

namespace vantory {

struct FileTraits {
  FileIdentity identity;
  std::uint64_t size = 0;  // bytes; of a folder those of all it holds
  Timestamp modified;      // of a folder the newest of all it holds

  bool operator==(const FileTraits&) const = default;
};

// None where nothing is, or any of it cannot be looked at. Links are not followed. A folder is gone through as a whole,
// but for a backup, whose settings speak for it.
std::optional<FileTraits> traitsOf(const std::string& path);

// Whether one is a copy of the other, which keeps size and times.
inline bool isCopyOf(const FileTraits& copy, const FileTraits& source) {
  return copy.size == source.size && copy.modified == source.modified;
}

}  // namespace vantory
