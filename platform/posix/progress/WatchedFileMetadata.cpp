#include "platform/posix/progress/WatchedFileMetadata.h"

#include <algorithm>

#include "platform/posix/progress/ProgressLine.h"

namespace vantory {

std::vector<Status> WatchedFileMetadata::setAllLocked(const std::vector<std::string>& paths, bool locked) {
  if (!paths.empty()) line_.show(locked ? "Locking" : "Unlocking", paths.front());
  auto results = disk_.setAllLocked(paths, locked);
  line_.advance(0, static_cast<int>(std::ranges::count_if(results, &Status::ok)));
  return results;
}

Status WatchedFileMetadata::setModified(const std::string& path, std::optional<Timestamp> time) {
  return disk_.setModified(path, time);
}

bool WatchedFileMetadata::isWritable(const std::string& path) const {
  return disk_.isWritable(path);
}

bool WatchedFileMetadata::isExecutable(const std::string& path) const {
  return disk_.isExecutable(path);
}

bool WatchedFileMetadata::isPackage(const std::string& path) const {
  return disk_.isPackage(path);
}

Result<std::string> WatchedFileMetadata::linkTarget(const std::string& path) const {
  return disk_.linkTarget(path);
}

Result<std::string> WatchedFileMetadata::finderInfo(const std::string& path) const {
  return disk_.finderInfo(path);
}

Status WatchedFileMetadata::setFinderInfo(const std::string& path, const std::string& bytes) {
  return disk_.setFinderInfo(path, bytes);
}

}  // namespace vantory
