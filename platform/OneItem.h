// Whether two paths lead to one item.
#pragma once

#include <string>

#include "platform/FileSystem.h"

namespace vantory {

// Whether two paths lead to one item. Their texts do not tell: a volume may find a name in any case, and know more than
// one way to a folder.
inline bool leadToOneItem(const FileSystem& files, const std::string& path, const std::string& other) {
  if (path == other) return true;
  const auto item = files.info(path, Links::DoNotFollow);
  const auto otherItem = files.info(other, Links::DoNotFollow);
  return item && otherItem && item->identity == otherItem->identity;
}

}  // namespace vantory
