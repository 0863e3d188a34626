// What a copy found at its source, so that the originals are removed only where they are still that.
#pragma once

#include <sys/stat.h>

#include <string>
#include <unordered_map>

#include "base/Result.h"

namespace vantory {

// Whether a file was left alone between two looks. The change time tells even a writer that sets the modification time
// back.
bool isUnchanged(const struct stat& before, const struct stat& after);

// Each item by its path, as it was when it was copied.
class CopiedItems {
 public:
  void add(const std::string& path, const struct stat& status) { items_.insert_or_assign(path, status); }

  // Whether all of a folder's or file's content can go: fails for what is not as it was copied, was not copied at all,
  // or is locked. `name` in an open folder (AT_FDCWD for a whole path) is the item at `path`.
  Status lookAgain(int folder, const std::string& name, const std::string& path) const;
  // Whether one item is still what was copied. A look for the last moment: what was removed beside it, or renamed above
  // it, has changed the change time, and that of a folder tells nothing.
  Status isSame(int folder, const std::string& name, const std::string& path) const;

 private:
  Status lookAt(int folder, const std::string& name, const std::string& path, int depth) const;

  std::unordered_map<std::string, struct stat> items_;
};

}  // namespace vantory
