// Why an original stays where it is though it was copied to another disk.
#pragma once

#include <string>

#include "base/Result.h"
#include "platform/FileSystem.h"

namespace vantory {

inline Error changedWhileMoved(const std::string& path) {
  return {std::errc::device_or_resource_busy, path + ": it changed while it was moved, and stays"};
}

// It is new, or of a kind that no copy takes.
inline Error notCopied(const std::string& path, FileType type) {
  if (type != FileType::Other)
    return {std::errc::device_or_resource_busy, path + ": it appeared while its folder was moved, and stays"};
  return {std::errc::not_supported, path + ": a special file cannot be moved to another disk, and stays"};
}

}  // namespace vantory
