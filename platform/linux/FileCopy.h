// Copying one open file into another, with what belongs to it.
#pragma once

#include <sys/stat.h>

#include <mutex>
#include <string>
#include <vector>

#include "platform/Result.h"
#include "platform/linux/Descriptor.h"

namespace vantory {

class FileRights;

// Sentences about what was left out, gathered from several threads; what a whole file system cannot hold is told once.
class CopyNotes {
 public:
  void add(std::string note);
  void addOnce(const std::string& kind, std::string note);
  std::vector<std::string> take();

 private:
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
// copy.
Status copyFileContent(int source, struct stat status, int copy, const std::string& path,
                       const std::string& destination, const FileRights& rights, CopyNotes& notes);

// Gives a copy the extended attributes, mode and times of its source. Content must be complete: it may be read-only
// afterwards.
Status copyAttributes(int source, const struct stat& status, int copy, const std::string& path,
                      const std::string& destination, const FileRights& rights, CopyNotes& notes);

}  // namespace vantory
