// The user's disk, with preferences that the system keeps in memory.
#pragma once

#include "platform/macos/files/MacFileSystem.h"
#include "platform/macos/session/PreferencesDaemon.h"

namespace vantory {

// Copies and changes items when the daemon has been told. The program's own settings it reads as they are, and writes
// as any others: a person may have asked the daemon for them.
class UserFiles : public MacFileSystem {
 public:
  // The daemon outlives it.
  explicit UserFiles(PreferencesDaemon& daemon) : daemon_(daemon) {}

  Status write(const std::string& path, std::string_view bytes, WriteOptions options) override {
    daemon_.beforeChange(path);
    return MacFileSystem::write(path, bytes, options);
  }
  Result<std::unique_ptr<StagedCopy>> stageCopy(const CopyRequest& request) override {
    daemon_.beforeReading(request.source);
    daemon_.beforeChange(request.destination);
    return MacFileSystem::stageCopy(request);
  }
  Result<Notes> move(const std::string& source, const std::string& destination) override {
    daemon_.beforeChange(source);
    daemon_.beforeChange(destination);
    return MacFileSystem::move(source, destination);
  }
  Status remove(const std::string& path) override {
    daemon_.beforeChange(path);
    return MacFileSystem::remove(path);
  }
  Result<Trashed> trash(const std::string& path, const std::string& trashFolder) override {
    daemon_.beforeChange(path);
    return MacFileSystem::trash(path, trashFolder);
  }

 private:
  PreferencesDaemon& daemon_;
};

}  // namespace vantory
