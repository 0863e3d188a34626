// What the program asks about a file beside its name and content.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/Result.h"
#include "platform/Clock.h"

namespace vantory {

class FileMetadata {
 public:
  virtual ~FileMetadata() = default;

  // Sets or clears the immutable flag of regular files or folders, and answers for each in that order. Never follows a
  // link.
  virtual std::vector<Status> setAllLocked(const std::vector<std::string>& paths, bool locked) = 0;
  Status setLocked(const std::string& path, bool locked) { return std::move(setAllLocked({path}, locked).front()); }

  // Sets the time of last change; never creates a file. Now, where no time is given: that may whoever may write to the
  // item, any other time only its owner.
  virtual Status setModified(const std::string& path, std::optional<Timestamp> time) = 0;

  // Whether the process may write to the item, as far as the system tells beforehand.
  virtual Status checkWritable(const std::string& path) const = 0;
  bool isWritable(const std::string& path) const { return checkWritable(path).ok(); }

  // True when the item is a regular file that the process may execute.
  virtual bool isExecutable(const std::string& path) const = 0;

  // True for a folder that the desktop shows as one document or program.
  virtual bool isPackage(const std::string& path) const = 0;

  // The text of a symbolic link.
  virtual Result<std::string> linkTarget(const std::string& path) const = 0;

  // The 32 bytes of Finder information, all zero when the item has none.
  virtual Result<std::string> finderInfo(const std::string& path) const = 0;
  virtual Status setFinderInfo(const std::string& path, const std::string& bytes) = 0;
};

}  // namespace vantory
