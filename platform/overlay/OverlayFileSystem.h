// A disk that is only looked at: what would be written is recorded, and read back from the record.
#pragma once

#include "base/Paths.h"
#include "platform/FileMetadata.h"
#include "platform/FileSystem.h"
#include "platform/overlay/Changes.h"
#include "platform/overlay/OverlayTree.h"

namespace vantory {

// Changes fail where the real ones would for want of a right, a missing folder or something in the way. What only
// trying can tell, such as a full disk or a file that cannot be read, it does not foresee.
class OverlayFileSystem : public FileSystem {
 public:
  // All outlive it.
  OverlayFileSystem(const FileSystem& disk, const FileMetadata& metadata, OverlayTree& tree, Changes& changes)
      : disk_(disk), metadata_(metadata), tree_(tree), changes_(changes) {}

  // Whether rights stand in the way from now on; an administrator's do not.
  void setUnlimited(bool unlimited) { unlimited_ = unlimited; }

  Result<FileInfo> info(const std::string& path, Links links) const override;
  Result<std::vector<DirectoryEntry>> list(const std::string& path, Detail detail) const override;
  Result<std::string> read(const std::string& path) const override;
  Result<bool> haveSameContent(const std::string& path, const std::string& other) const override;
  Status write(const std::string& path, std::string_view bytes, WriteOptions options) override;
  // Refused: a log of what did not happen would be none.
  Result<std::unique_ptr<AppendFile>> openForAppending(const std::string& path) override;
  Result<std::unique_ptr<StagedCopy>> stageCopy(const CopyRequest& request) override;
  Result<Notes> move(const std::string& source, const std::string& destination) override;
  Status remove(const std::string& path) override;
  Status makeFolder(const std::string& path) override;
  // The answer is where the item would lie were no other of its name there.
  Result<Trashed> trash(const std::string& path, const std::string& trashFolder) override;
  Status sync(const std::string& path) override;
  // Nothing changes, so nobody is kept out and nobody waited for.
  Result<std::unique_ptr<FolderHold>> holdFolder(const std::string& path, std::chrono::milliseconds wait) override;

 private:
  class OverlayCopy;

  OverlayNode node(const std::string& path) const { return tree_.at(paths::normalized(path)); }
  Error missing(const std::string& path) const;
  bool exists(const std::string& path) const { return info(path, Links::DoNotFollow).ok(); }
  // Why the entry cannot be made in, or taken from, its folder; none when it can.
  std::optional<std::errc> obstacleTo(const std::string& path) const;
  std::optional<std::errc> obstacleToTaking(const std::string& path) const;
  bool isReachedWithoutLinks(const CopyRequest& request) const;
  Status commit(const Change& copy, OverlayNode node, StagedCopy::Existing existing);
  void forget(const std::string& path, Change change);

  const FileSystem& disk_;
  const FileMetadata& metadata_;
  OverlayTree& tree_;
  Changes& changes_;
  bool unlimited_ = false;
};

}  // namespace vantory
