// Files that decide what the program does to others, and so must be of an owner who may decide that.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "base/Result.h"

namespace vantory {

// Whose files count: those of the process's own user and of the superuser that nobody may write to whom the system
// calls "others"; or only those of the superuser that nobody else may write to, below folders that are so too.
enum class TrustedOwners { UserAndSuperuser, Superuser };

struct TrustedFile {
  std::string path;
  Result<std::string> bytes;  // an error where it is too large or not to be trusted
};

class TrustedFiles {
 public:
  virtual ~TrustedFiles() = default;

  struct Limits {
    std::size_t files = 0;
    std::size_t bytes = 0;  // of each
  };

  // The files of a folder whose names end so and do not begin with a dot, by name; none where there is no folder. Links
  // and all that is no regular file are not to be trusted. Fails where the folder is not to be trusted, cannot be read,
  // or holds more of them. Any thread; with the process's own rights.
  virtual Result<std::vector<TrustedFile>> read(const std::string& folder, std::string_view ending, Limits limits,
                                                TrustedOwners owners) const = 0;
};

}  // namespace vantory
