// Records flags and times instead of setting them.
#include "platform/overlay/OverlayMetadata.h"

#include <system_error>

#include "base/Paths.h"
#include "platform/FileSystem.h"

namespace vantory {

namespace {

using Lock = std::lock_guard<std::recursive_mutex>;

}  // namespace

std::vector<Status> OverlayMetadata::setAllLocked(const std::vector<std::string>& paths, bool locked) {
  const Lock lock(tree_.mutex);
  std::vector<Status> results;
  results.reserve(paths.size());
  for (const std::string& path : paths) results.push_back(setLockedAt(path, locked));
  return results;
}

// An item that is as wanted already is no change.
Status OverlayMetadata::setLockedAt(const std::string& path, bool locked) {
  Change change{.kind = locked ? Change::Kind::Lock : Change::Kind::Unlock, .path = path};
  const auto info = files_.info(path, Links::DoNotFollow);
  if (!info) return info.error();
  if (info->type != FileType::File && info->type != FileType::Folder) {
    change.refusal = info->type == FileType::SymbolicLink ? "it is a symbolic link" : "it is no file and no folder";
    Error error{std::errc::invalid_argument, path + ": " + *change.refusal};
    changes_.add(std::move(change));
    return error;
  }
  if (info->locked == locked) return {};
  tree_.own(paths::normalized(path)).locked = locked;
  changes_.add(std::move(change));
  return {};
}

Status OverlayMetadata::setModified(const std::string& path, std::optional<Timestamp> time) {
  const Lock lock(tree_.mutex);
  const auto info = files_.info(path, Links::Follow);
  if (!info) return info.error();
  if (time) tree_.own(paths::normalized(path)).modified = time;
  return {};
}

std::string OverlayMetadata::placeOnDisk(const std::string& path) const {
  const Lock lock(tree_.mutex);
  return tree_.placeOnDisk(path);
}

// The disk tells only of what was not made, locked or unlocked here.
Status OverlayMetadata::checkWritable(const std::string& path) const {
  const Lock lock(tree_.mutex);
  const auto info = files_.info(path, Links::Follow);
  if (!info) return info.error();
  if (info->locked) return Error{std::errc::operation_not_permitted, path + " is locked"};
  const OverlayNode node = tree_.at(paths::normalized(path));
  return node.isMade() || node.locked ? Status() : disk_.checkWritable(node.origin);
}

bool OverlayMetadata::isExecutable(const std::string& path) const {
  return disk_.isExecutable(placeOnDisk(path));
}

bool OverlayMetadata::isPackage(const std::string& path) const {
  return disk_.isPackage(placeOnDisk(path));
}

Result<std::string> OverlayMetadata::linkTarget(const std::string& path) const {
  return disk_.linkTarget(placeOnDisk(path));
}

Result<std::string> OverlayMetadata::finderInfo(const std::string& path) const {
  return disk_.finderInfo(placeOnDisk(path));
}

Status OverlayMetadata::setFinderInfo(const std::string& path, const std::string&) {
  const auto code = std::errc::read_only_file_system;
  return Error{code, path + ": " + std::make_error_code(code).message()};
}

}  // namespace vantory
