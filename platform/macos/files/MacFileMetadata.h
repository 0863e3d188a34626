// What macOS keeps of a file beside its name and content.
#pragma once

#include "platform/FileMetadata.h"

namespace vantory {

// With the process's own rights, which suffice for the owner of an item to lock it. Any thread.
class MacFileMetadata : public FileMetadata {
 public:
  std::vector<Status> setAllLocked(const std::vector<std::string>& paths, bool locked) override;
  Status setModified(const std::string& path, std::optional<Timestamp> time) override;
  bool isWritable(const std::string& path) const override;
  bool isExecutable(const std::string& path) const override;
  // By its extension or by what the Finder notes of it.
  bool isPackage(const std::string& path) const override;
  Result<std::string> linkTarget(const std::string& path) const override;
  Result<std::string> finderInfo(const std::string& path) const override;
  Status setFinderInfo(const std::string& path, const std::string& bytes) override;
};

}  // namespace vantory
