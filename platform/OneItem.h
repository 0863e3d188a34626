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

// The same where a mistake would cost something: fails where an item that may be there cannot be looked at.
inline Result<bool> surelyLeadToOneItem(const FileSystem& files, const std::string& path, const std::string& other) {
  for (const std::string* each : {&path, &other})
    if (const auto item = files.info(*each, Links::DoNotFollow); !item && !meansMissing(item.error()))
      return item.error();
  return leadToOneItem(files, path, other);
}

}  // namespace vantory
