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

  // Devices are numbered anew whenever disks are attached: what bears the number on one of them tells enough.
  bool isSameItem(const FileTraits& other) const { return identity.number == other.identity.number; }
  bool operator==(const FileTraits& other) const {
    return isSameItem(other) && size == other.size && modified == other.modified;
  }
};

// None where nothing is, or any of it cannot be looked at. Links are not followed. A folder is gone through as a whole,
// but for a backup, whose settings speak for it.
std::optional<FileTraits> traitsOf(const std::string& path);
// The same of the item alone: a folder is not looked into, and has no size.
std::optional<FileTraits> ownTraitsOf(const std::string& path);

// Whether one is a copy of the other, which keeps size and times.
inline bool isCopyOf(const FileTraits& copy, const FileTraits& source) {
  return copy.size == source.size && copy.modified == source.modified;
}

}  // namespace vantory
