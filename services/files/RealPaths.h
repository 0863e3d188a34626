// Where items lie without links.
#pragma once

#include <string>

namespace vantory {

// For many items one after the other, at one time and on one thread.
class RealPaths {
 public:
  // As QWFileManager::realPath(), but a folder is followed once for all items that are asked for in a row.
  std::string of(const std::string& path);

 private:
  std::string folder_;
  std::string realFolder_;
};

}  // namespace vantory
