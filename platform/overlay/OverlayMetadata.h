// The metadata of a disk that is only looked at.
#pragma once

#include "platform/FileMetadata.h"
#include "platform/overlay/Changes.h"
#include "platform/overlay/OverlayTree.h"

namespace vantory {

class FileSystem;

// Whether the system lets the process lock a file shows only when it is tried: here it does.
class OverlayMetadata : public FileMetadata {
 public:
  // All outlive it; `files` is the disk with the tree over it.
  OverlayMetadata(const FileMetadata& disk, const FileSystem& files, OverlayTree& tree, Changes& changes)
      : disk_(disk), files_(files), tree_(tree), changes_(changes) {}

  std::vector<Status> setAllLocked(const std::vector<std::string>& paths, bool locked) override;
  // Told of nowhere: tasks set the time of what they have just made.
  Status setModified(const std::string& path, std::optional<Timestamp> time) override;
  Status checkWritable(const std::string& path) const override;
  bool isExecutable(const std::string& path) const override;
  bool isPackage(const std::string& path) const override;
  Result<std::string> linkTarget(const std::string& path) const override;
  Result<std::string> finderInfo(const std::string& path) const override;
  // Refused: no task sets it.
  Status setFinderInfo(const std::string& path, const std::string& bytes) override;

 private:
  Status setLockedAt(const std::string& path, bool locked);
  std::string placeOnDisk(const std::string& path) const;

  const FileMetadata& disk_;
  const FileSystem& files_;
  OverlayTree& tree_;
  Changes& changes_;
};

}  // namespace vantory
