// The checksums of files, through Linux system calls.
#pragma once

#include "platform/Checksums.h"
#include "platform/linux/files/FileRights.h"

namespace vantory {

class LinuxChecksums : public Checksums {
 public:
  explicit LinuxChecksums(FileRights rights = FileRights::own()) : rights_(std::move(rights)) {}

  Result<std::unique_ptr<FolderChecksums>> ofFolder(const std::string& folder) const override;
  Result<std::optional<std::string>> held(const std::string& path) const override;
  Status setHeld(const std::string& path, const std::optional<std::string>& held) override;

 private:
  Result<Descriptor> openFile(const std::string& path) const;

  FileRights rights_;
};

}  // namespace vantory
