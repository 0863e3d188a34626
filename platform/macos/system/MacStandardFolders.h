// The folders of a Mac, by the names that they have on the disk.
#pragma once

#include "platform/StandardFolders.h"

namespace vantory {

// Any thread.
class MacStandardFolders : public StandardFolders {
 public:
  // `root` is put before every folder that is not a user's.
  explicit MacStandardFolders(std::string root = "") : root_(std::move(root)) {}

  std::optional<std::string> userFolder(StandardFolder folder, const std::string& home) const override;
  std::optional<std::string> localFolder(StandardFolder folder) const override;
  std::string systemLibraryFolder() const override { return root_ + "/System/Library"; }
  std::vector<std::string> programDataFolders() const override;

 private:
  const std::string root_;
};

}  // namespace vantory
