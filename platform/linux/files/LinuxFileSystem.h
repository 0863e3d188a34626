// The disk, through Linux system calls.
#pragma once

#include "platform/FileSystem.h"
#include "platform/linux/files/DesktopTrash.h"
#include "platform/linux/files/FileRights.h"

namespace vantory {

class LinuxFileSystem : public FileSystem {
 public:
  explicit LinuxFileSystem(FileRights rights = FileRights::own()) : rights_(std::move(rights)), trash_(rights_) {}

  Result<FileInfo> info(const std::string& path, Links links) const override;
  Result<std::vector<DirectoryEntry>> list(const std::string& path, Detail detail) const override;
  Result<std::string> read(const std::string& path) const override;
  Result<bool> haveSameContent(const std::string& path, const std::string& other) const override;
  Status write(const std::string& path, std::string_view bytes, WriteOptions options) override;
  Result<std::unique_ptr<AppendFile>> openForAppending(const std::string& path) override;
  Result<std::unique_ptr<StagedCopy>> stageCopy(const CopyRequest& request) override;
  Result<Notes> move(const std::string& source, const std::string& destination) override;
  Status remove(const std::string& path) override;
  Status makeFolder(const std::string& path) override;
  Result<Trashed> trash(const std::string& path, const std::string& trashFolder) override;
  Status sync(const std::string& path) override;
  Result<std::unique_ptr<FolderHold>> holdFolder(const std::string& path, std::chrono::milliseconds wait) override;

  // Copies a symbolic link, with its times, under a name that nothing has.
  Status copyLink(const std::string& source, const std::string& destination);

 private:
  Result<Descriptor> openAt(const std::string& path, int flags, mode_t mode = 0) const;
  Result<Descriptor> openCopySource(const CopyRequest& request) const;

  FileRights rights_;
  DesktopTrash trash_;
};

}  // namespace vantory
