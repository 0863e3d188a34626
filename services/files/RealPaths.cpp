// Looks at an item itself only for whether it is a link.
#include "services/files/RealPaths.h"

#include <utility>

#include "base/Paths.h"
#include "services/files/QWFileManager.h"

namespace vantory {

std::string RealPaths::of(const std::string& path) {
  if (QWFileManager::isSymbolicLinkAtPath(path)) return QWFileManager::realPath(path);
  std::string folder = paths::parent(path);
  if (folder != folder_) {
    realFolder_ = QWFileManager::realPath(folder);
    folder_ = std::move(folder);
  }
  return paths::join(realFolder_, paths::lastComponent(path));
}

}  // namespace vantory
