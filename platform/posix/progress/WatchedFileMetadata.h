// Locks of a disk on which what may take long is shown.
#pragma once

#include "platform/FileMetadata.h"

namespace vantory {

class ProgressLine;

class WatchedFileMetadata : public FileMetadata {
 public:
  // Both outlive it.
  WatchedFileMetadata(FileMetadata& disk, ProgressLine& line) : disk_(disk), line_(line) {}

  std::vector<Status> setAllLocked(const std::vector<std::string>& paths, bool locked) override;
  Status setModified(const std::string& path, std::optional<Timestamp> time) override;
  bool isWritable(const std::string& path) const override;
  bool isExecutable(const std::string& path) const override;
  bool isPackage(const std::string& path) const override;
  Result<std::string> linkTarget(const std::string& path) const override;
  Result<std::string> finderInfo(const std::string& path) const override;
  Status setFinderInfo(const std::string& path, const std::string& bytes) override;

 private:
  FileMetadata& disk_;
  ProgressLine& line_;
};

}  // namespace vantory
