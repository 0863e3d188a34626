// A disk whose work a person at a terminal may watch.
#pragma once

#include <memory>

#include "platform/posix/progress/ProgressLine.h"
#include "platform/posix/progress/WatchedFiles.h"

namespace vantory {

// The parts of a disk, as they are or, from show() on, the same with each step shown.
class ShownDisk {
 public:
  // They outlive it.
  ShownDisk(FileSystem& files, FileMetadata& metadata, Checksums& checksums)
      : files_(files), metadata_(metadata), checksums_(checksums) {}

  // Shows nothing where no line can be drawn. Called before anybody has got a part.
  void show();

  FileSystem& files() { return watched_ ? watched_->files : files_; }
  FileMetadata& metadata() { return watched_ ? watched_->metadata : metadata_; }
  Checksums& checksums() { return watched_ ? watched_->checksums : checksums_; }
  // Null where nothing is shown.
  ProgressLine* line() const { return line_.get(); }

 private:
  struct Watched {
    WatchedFileSystem files;
    WatchedFileMetadata metadata;
    WatchedChecksums checksums;
  };

  FileSystem& files_;
  FileMetadata& metadata_;
  Checksums& checksums_;
  std::unique_ptr<ProgressLine> line_;
  std::unique_ptr<Watched> watched_;
};

}  // namespace vantory
