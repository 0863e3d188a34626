// Copying one open file into another, with what belongs to it.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "base/Result.h"
#include "platform/FileSystem.h"
#include "platform/posix/files/Descriptor.h"

namespace vantory {

class CopiedItems;
class FileRights;

// With whose rights files are copied, and what comes of their checksums.
struct CopyManner {
  const FileRights& rights;
  CopyChecksum checksum = CopyChecksum::Keep;
};

// What the threads of a copy tell: sentences about what was left out, to an observer how far they are, and what was
// copied where the originals are to go.
class CopyReport {
 public:
  CopyReport() = default;
  explicit CopyReport(CopyObserver observer) : observer_(std::move(observer)) {}
  explicit CopyReport(CopiedItems& items) : items_(&items) {}

  void note(std::string sentence);
  // Only the first of its kind: what a whole file system cannot hold is told once.
  void noteOnce(const std::string& kind, std::string sentence);
  std::vector<std::string> takeNotes();

  bool isObserved() const { return observer_ != nullptr; }
  // False, with errno, when the observer wants the copy to end.
  bool advance(std::int64_t bytes, int objects) const;
  // The item at this path is copied as it was with this status.
  void copied(const std::string& path, const struct stat& status);

 private:
  const CopyObserver observer_;
  CopiedItems* const items_ = nullptr;
  std::mutex mutex_;
  std::vector<std::string> notes_;
  std::vector<std::string> told_;
};

// Opens a file or folder that is to be copied, without waiting for a FIFO or following a link. An invalid descriptor
// leaves errno.
Descriptor openSource(int folder, const char* name, int followFlag);

// Takes from a new file or folder the access lists that it inherited from the folder it was made in: they would let
// others in as soon as the copy gets its mode. False, with errno, when it may still have them.
bool dropInherited(int item);

// Copies the content and attributes of an open regular file of this status into a new empty one. A source that changes
// meanwhile is copied again, up to three times. `path` names the source in messages; `destination` decides who owns the
// copy, which is open for reading too.
Status copyFileContent(int source, struct stat status, int copy, const std::string& path,
                       const std::string& destination, const CopyManner& manner, CopyReport& report);

// Copies a symbolic link, with its times, under a name that nothing has; leaves nothing behind when it fails. `path`
// and `destination` as above.
Status copyLink(int folder, const char* name, int copyFolder, const char* copyName, const std::string& path,
                const std::string& destination, const FileRights& rights, CopyReport& report);

// Gives a copy the extended attributes, mode and times of its source. Content must be complete: it may be read-only
// afterwards.
Status copyAttributes(int source, const struct stat& status, int copy, const std::string& path,
                      const std::string& destination, const CopyManner& manner, CopyReport& report);

}  // namespace vantory
