// Copying open files and folders, with what belongs to them.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "base/Result.h"
#include "platform/FileSystem.h"
#include "platform/macos/darwin/Darwin.h"
#include "platform/macos/files/Items.h"

namespace vantory::macos {

// How a copy is made, and what it tells: sentences about what was left out, how far it is, and how each item was when
// it was copied.
class CopyReport {
 public:
  CopyReport() = default;
  explicit CopyReport(CopyObserver observer, CopyChecksum checksum = CopyChecksum::Keep)
      : observer_(std::move(observer)), checksum_(checksum) {}

  // What comes of the checksums that files carry.
  CopyChecksum checksum() const { return checksum_; }

  void note(std::string sentence) { notes_.push_back(std::move(sentence)); }
  // Only the first of its kind: what a whole volume cannot hold is told once.
  void noteOnce(const std::string& kind, std::string sentence);
  Notes takeNotes() { return std::move(notes_); }

  // False, with errno, when the observer wants the copy to end.
  bool advance(std::int64_t bytes, int objects) const;

  void copied(const std::string& path, const darwin::ItemStatus& status) { items_.insert_or_assign(path, status); }
  // Whether all of a folder's or file's content can go: fails for what is not as it was copied, was not copied at all,
  // or is locked. `name` in an open folder (AT_FDCWD for a whole path) is the item at `path`.
  Status lookAgain(int folder, const std::string& name, const std::string& path) const;
  // Whether one item is still what was copied. A look for the last moment: what was removed beside it, or renamed above
  // it, has changed the change time, and that of a folder tells nothing.
  Status isSame(int folder, const std::string& name, const std::string& path) const;

 private:
  Status lookAt(int folder, const std::string& name, const std::string& path, int depth) const;

  CopyObserver observer_;
  CopyChecksum checksum_ = CopyChecksum::Keep;
  Notes notes_;
  std::vector<std::string> told_;
  std::unordered_map<std::string, darwin::ItemStatus> items_;
};

// Opens a file or folder that is to be copied, without waiting for a FIFO. An invalid descriptor leaves errno.
Descriptor openSource(int folder, const std::string& name, Links links);

// Makes a new file of the content and attributes of an open one, of which it shares the blocks; none where the volume
// cannot do that. `status` is of the source, looked at before.
Result<Descriptor> cloneFile(int source, const darwin::ItemStatus& status, const Place& copy, const std::string& path,
                             CopyReport& report);
// The same into a new empty file, byte by byte. A source that changes meanwhile is copied again, up to three times.
Status copyFile(int source, darwin::ItemStatus status, int copy, const std::string& path, CopyReport& report);
// Copies what an open folder holds, and its attributes, into a new empty one.
Status copyTree(int source, int copy, const std::string& path, CopyReport& report);
// Copies a symbolic link, with its times, under a name that nothing has; leaves nothing behind when it fails.
Status copyLink(int folder, const std::string& name, const Place& copy, const std::string& path, CopyReport& report);
// Gives a copy the attributes, access list, mode and dates of its source, but no lock.
void copyAttributes(int source, const darwin::ItemStatus& status, int copy, const std::string& path,
                    CopyReport& report);

}  // namespace vantory::macos
