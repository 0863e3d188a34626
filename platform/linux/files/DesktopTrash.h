// The desktop's Trash, laid out as file managers expect it.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <ctime>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/Result.h"
#include "platform/FileSystem.h"
#include "platform/linux/files/FileRights.h"
#include "platform/posix/files/Descriptor.h"

namespace vantory {

// Moves items into the Trash of the user, or into that of the file system they lie on, with the note that lets a file
// manager put them back. Remembers the open folders and the last number given to each name, so that many items go in
// quickly. Any thread.
class DesktopTrash {
 public:
  explicit DesktopTrash(const FileRights& rights) : rights_(rights) {}

  // `homeFiles` is the "files" folder of the user's own Trash.
  Result<Trashed> put(const std::string& path, const std::string& homeFiles);

 private:
  // One Trash: its open folders and where it lies.
  struct Can {
    std::string filesPath;     // where its items lie
    std::string topDirectory;  // of the file system; empty for the user's own Trash
    Descriptor files;
    Descriptor info;
    std::unordered_map<std::string, int> lastNumbers;
  };

  Can* knownCan(std::string_view filesFolder) const;
  Result<Can*> homeCan(const std::string& homeFiles);
  Result<Can*> volumeCan(const std::string& path);
  Result<Can> openCan(const std::string& path, const std::string& topDirectory) const;
  Result<Trashed> putInto(const Place& item, const std::string& path, const std::string& homeFiles);
  Result<Trashed> putInto(Can& can, const Place& item, const std::string& path);
  Result<Notes> moveInto(const Can& can, const std::string& trashed, const Place& item, const std::string& path) const;
  void forget(const Can& can);

  const FileRights& rights_;
  std::mutex mutex_;
  std::vector<std::unique_ptr<Can>> cans_;
  std::time_t dateTime_ = -1;  // of the date text
  std::string date_;           // local; worked out once a second
};

}  // namespace vantory
