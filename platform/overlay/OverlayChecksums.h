// Checksums on a disk that is only looked at.
#pragma once

#include "platform/Checksums.h"
#include "platform/overlay/OverlayTree.h"

namespace vantory {

class OverlayChecksums : public Checksums {
 public:
  // Both outlive it.
  OverlayChecksums(const Checksums& disk, OverlayTree& tree) : disk_(disk), tree_(tree) {}

  Result<std::unique_ptr<FolderChecksums>> ofFolder(const std::string& folder) const override {
    return disk_.ofFolder(placeOnDisk(folder));
  }
  Result<std::optional<std::string>> held(const std::string& path) const override {
    return disk_.held(placeOnDisk(path));
  }
  // Told of nowhere: tasks note what they have just made.
  Status setHeld(const std::string&, const std::optional<std::string>&) override { return {}; }

 private:
  std::string placeOnDisk(const std::string& path) const {
    const std::lock_guard lock(tree_.mutex);
    return tree_.placeOnDisk(path);
  }

  const Checksums& disk_;
  OverlayTree& tree_;
};

}  // namespace vantory
