// A disk, and its locks, on which each step that may take long is shown.
#pragma once

#include "platform/Checksums.h"
#include "platform/FileMetadata.h"
#include "platform/FileSystem.h"

namespace vantory {

class ProgressLine;

class WatchedFileSystem : public FileSystem {
 public:
  // Both outlive it.
  WatchedFileSystem(FileSystem& disk, ProgressLine& line) : disk_(disk), line_(line) {}

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

 private:
  FileSystem& disk_;
  ProgressLine& line_;
};

class WatchedFileMetadata : public FileMetadata {
 public:
  // Both outlive it.
  WatchedFileMetadata(FileMetadata& disk, ProgressLine& line) : disk_(disk), line_(line) {}

  std::vector<Status> setAllLocked(const std::vector<std::string>& paths, bool locked) override;
  Status setModified(const std::string& path, std::optional<Timestamp> time) override;
  Status checkWritable(const std::string& path) const override;
  bool isExecutable(const std::string& path) const override;
  bool isPackage(const std::string& path) const override;
  Result<std::string> linkTarget(const std::string& path) const override;
  Result<std::string> finderInfo(const std::string& path) const override;
  Status setFinderInfo(const std::string& path, const std::string& bytes) override;

 private:
  FileMetadata& disk_;
  ProgressLine& line_;
};

class WatchedChecksums : public Checksums {
 public:
  // Both outlive it.
  WatchedChecksums(Checksums& disk, ProgressLine& line) : disk_(disk), line_(line) {}

  Result<std::unique_ptr<FolderChecksums>> ofFolder(const std::string& folder) const override;
  Result<std::optional<std::string>> held(const std::string& path) const override;
  Status setHeld(const std::string& path, const std::optional<std::string>& held) override;

 private:
  Checksums& disk_;
  ProgressLine& line_;
};

}  // namespace vantory
