// A backup's folder as its items see it.
#pragma once

#include <optional>
#include <string>

#include "catalog/BackupPlace.h"
#include "platform/FileSystem.h"

namespace vantory {

// Never changes, so that the items of a backup may share one and be used on any thread.
class BackupFolder : public BackupPlace {
 public:
  // For the user whose files are handled, or with that user's home folder known.
  explicit BackupFolder(std::string path);
  BackupFolder(std::string path, std::optional<std::string> home) : path_(std::move(path)), home_(std::move(home)) {}

  std::string path() const override { return path_; }
  std::string safeUserPath(const std::string& path) const override;
  Status checkCopy(const std::string& path) const override;
  bool holdsOtherFiles() const override;
  std::optional<std::string> olderWithSoundCopy(const std::string& path) const override;
  // Where the copy of such a file or folder lies, below the backup's folder.
  std::string placeOf(const std::string& source, FileType type) const;
  // Whether the path lies in the user's home folder, and so below the placeholder in the backup.
  bool isInHome(const std::string& path) const;

 private:
  std::string path_;
  std::optional<std::string> home_;
};

}  // namespace vantory
