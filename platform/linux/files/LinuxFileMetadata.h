// Flags, times and labels of files, through Linux system calls.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/FileMetadata.h"
#include "platform/linux/files/FileRights.h"
#include "platform/linux/locks/LockHelper.h"

namespace vantory {

class LinuxFileMetadata : public FileMetadata {
 public:
  explicit LinuxFileMetadata(FileRights rights = FileRights::own()) : rights_(std::move(rights)) {}

  // Works on the user's own files only, and needs a process that may set the immutable flag or the lock helper.
  std::vector<Status> setAllLocked(const std::vector<std::string>& paths, bool locked) override;
  Status setModified(const std::string& path, std::optional<Timestamp> time) override;
  Status checkWritable(const std::string& path) const override;
  bool isExecutable(const std::string& path) const override;
  bool isPackage(const std::string& path) const override;
  Result<std::string> linkTarget(const std::string& path) const override;
  Result<std::string> finderInfo(const std::string& path) const override;
  Status setFinderInfo(const std::string& path, const std::string& bytes) override;

 private:
  Result<Descriptor> openItem(const std::string& path) const;
  Status setLockedByItself(const std::string& path, bool locked, std::optional<std::string>& wayForHelper) const;
  Error withOwner(Error error, const std::string& path) const;
  Error lockError(const std::string& path, int number);

  FileRights rights_;
  LockHelper lockHelper_;
};

}  // namespace vantory
