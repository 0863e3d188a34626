// What macOS keeps of a file beside its name and content.
#pragma once

#include <utility>

#include "platform/FileMetadata.h"
#include "platform/macos/files/Rights.h"

namespace vantory {

// The process's own rights suffice for the owner of an item to lock it; as administrator only what changes an item is
// served. Any thread.
class MacFileMetadata : public FileMetadata {
 public:
  explicit MacFileMetadata(macos::Rights rights = macos::Rights::own()) : rights_(std::move(rights)) {}

  std::vector<Status> setAllLocked(const std::vector<std::string>& paths, bool locked) override;
  Status setModified(const std::string& path, std::optional<Timestamp> time) override;
  Status checkWritable(const std::string& path) const override;
  bool isExecutable(const std::string& path) const override;
  // By its extension or by what the Finder notes of it.
  bool isPackage(const std::string& path) const override;
  Result<std::string> linkTarget(const std::string& path) const override;
  Result<std::string> finderInfo(const std::string& path) const override;
  Status setFinderInfo(const std::string& path, const std::string& bytes) override;

 private:
  const macos::Rights rights_;
};

}  // namespace vantory
