// Tells the line of each step, and passes it on to the disk.
#include "platform/posix/progress/WatchedFiles.h"

#include <algorithm>

#include "base/Paths.h"
#include "platform/posix/progress/ProgressLine.h"

namespace vantory {

namespace {

class WatchedFolderChecksums : public FolderChecksums {
 public:
  WatchedFolderChecksums(std::unique_ptr<FolderChecksums> disk, std::string folder, ProgressLine& line)
      : disk_(std::move(disk)), folder_(std::move(folder)), line_(line) {}

  Result<FileChecksum> ofFile(const std::string& pathBelow) const override {
    line_.show("Verifying", paths::join(folder_, pathBelow));
    auto checksum = disk_->ofFile(pathBelow);
    if (checksum) line_.advance(static_cast<std::int64_t>(checksum->bytes), 1);
    return checksum;
  }

 private:
  std::unique_ptr<FolderChecksums> disk_;
  std::string folder_;
  ProgressLine& line_;
};

}  // namespace

Result<FileInfo> WatchedFileSystem::info(const std::string& path, Links links) const {
  return disk_.info(path, links);
}

Result<std::vector<DirectoryEntry>> WatchedFileSystem::list(const std::string& path, Detail detail) const {
  line_.show("Reading", path);
  return disk_.list(path, detail);
}

Result<std::string> WatchedFileSystem::read(const std::string& path) const {
  line_.show("Reading", path);
  return disk_.read(path);
}

Result<bool> WatchedFileSystem::haveSameContent(const std::string& path, const std::string& other) const {
  line_.show("Comparing", path);
  return disk_.haveSameContent(path, other);
}

Status WatchedFileSystem::write(const std::string& path, std::string_view bytes, WriteOptions options) {
  line_.show("Writing", path);
  return disk_.write(path, bytes, options);
}

Result<std::unique_ptr<AppendFile>> WatchedFileSystem::openForAppending(const std::string& path) {
  return disk_.openForAppending(path);
}

Result<std::unique_ptr<StagedCopy>> WatchedFileSystem::stageCopy(const CopyRequest& request) {
  line_.show("Copying", request.source);
  CopyRequest watched = request;
  // Whoever observes the copy can still end it.
  watched.observer = [this, observer = request.observer](std::int64_t bytes, int objects) {
    line_.advance(bytes, objects);
    return !observer || observer(bytes, objects);
  };
  return disk_.stageCopy(watched);
}

Result<Notes> WatchedFileSystem::move(const std::string& source, const std::string& destination) {
  line_.show("Moving", source);
  return disk_.move(source, destination);
}

Status WatchedFileSystem::remove(const std::string& path) {
  line_.show("Removing", path);
  return disk_.remove(path);
}

Status WatchedFileSystem::makeFolder(const std::string& path) {
  return disk_.makeFolder(path);
}

Result<Trashed> WatchedFileSystem::trash(const std::string& path, const std::string& trashFolder) {
  line_.show("Moving to the Trash:", path);
  auto place = disk_.trash(path, trashFolder);
  if (place) line_.advance(0, 1);
  return place;
}

Status WatchedFileSystem::sync(const std::string& path) {
  line_.show("Waiting until all is on disk:", path);
  return disk_.sync(path);
}

Result<std::unique_ptr<FolderHold>> WatchedFileSystem::holdFolder(const std::string& path,
                                                                  std::chrono::milliseconds wait) {
  line_.show("Waiting for another process in", path);
  return disk_.holdFolder(path, wait);
}

std::vector<Status> WatchedFileMetadata::setAllLocked(const std::vector<std::string>& paths, bool locked) {
  if (!paths.empty()) line_.show(locked ? "Locking" : "Unlocking", paths.front());
  auto results = disk_.setAllLocked(paths, locked);
  line_.advance(0, static_cast<int>(std::ranges::count_if(results, &Status::ok)));
  return results;
}

Status WatchedFileMetadata::setModified(const std::string& path, std::optional<Timestamp> time) {
  return disk_.setModified(path, time);
}

Status WatchedFileMetadata::checkWritable(const std::string& path) const {
  return disk_.checkWritable(path);
}

bool WatchedFileMetadata::isExecutable(const std::string& path) const {
  return disk_.isExecutable(path);
}

bool WatchedFileMetadata::isPackage(const std::string& path) const {
  return disk_.isPackage(path);
}

Result<std::string> WatchedFileMetadata::linkTarget(const std::string& path) const {
  return disk_.linkTarget(path);
}

Result<std::string> WatchedFileMetadata::finderInfo(const std::string& path) const {
  return disk_.finderInfo(path);
}

Status WatchedFileMetadata::setFinderInfo(const std::string& path, const std::string& bytes) {
  return disk_.setFinderInfo(path, bytes);
}

Result<std::unique_ptr<FolderChecksums>> WatchedChecksums::ofFolder(const std::string& folder) const {
  auto opened = disk_.ofFolder(folder);
  if (!opened) return opened;
  return std::unique_ptr<FolderChecksums>(std::make_unique<WatchedFolderChecksums>(std::move(*opened), folder, line_));
}

Result<std::optional<std::string>> WatchedChecksums::held(const std::string& path) const {
  return disk_.held(path);
}

Status WatchedChecksums::setHeld(const std::string& path, const std::optional<std::string>& held) {
  return disk_.setHeld(path, held);
}

}  // namespace vantory
