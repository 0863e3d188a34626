// Moving what cannot be renamed: by a copy, after which the original goes.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "platform/FileSystem.h"
#include "platform/posix/files/ItemLook.h"
#include "platform/posix/files/Place.h"

namespace vantory {

class CopiedItems;

// What a move asks of one system, about items in open folders. Calls that answer a number or a descriptor leave errno
// where they fail.
class MovingCalls {
 public:
  virtual ~MovingCalls() = default;

  // Looks at the item itself, never at what a link leads to, and tells whether it is locked.
  virtual int look(int folder, const std::string& name, ItemLook& look) const = 0;
  // Opens a folder for reading, never through a link.
  virtual Descriptor openFolder(int folder, const std::string& name) const = 0;
  virtual Result<std::vector<DirectoryEntry>> entries(int folder, const std::string& path) const = 0;
  // Renames beside itself, never over an existing item.
  virtual int renameKeeping(int folder, const std::string& from, const std::string& to) const = 0;
  // Deletes an item, a folder with all it holds, and asks before each.
  virtual Status remove(int folder, const std::string& name, const std::string& path,
                        const RemovalCheck& check) const = 0;
  // Returns when the file system that holds the item has all on its medium.
  virtual Status sync(const Place& item, const std::string& path) const = 0;
  // Copies an item, and says how it and all that it holds was then; nothing is left under the new name where it fails.
  virtual Result<Notes> copy(const Place& from, const Place& to, const ItemLook& item, CopiedItems& items) const = 0;
};

// What a copy found at its source, each item by its path, so that the originals are removed only where they are still
// that.
class CopiedItems {
 public:
  void add(const std::string& path, const ItemLook& look) { items_.insert_or_assign(path, look); }

  // Whether all of a folder's or file's content can go: fails for what is not as it was copied, was not copied at all,
  // or is locked. `name` in an open folder (AT_FDCWD for a whole path) is the item at `path`.
  Status lookAgain(const MovingCalls& calls, int folder, const std::string& name, const std::string& path,
                   int depth = 0) const;
  // Whether one item is still what was copied. A look for the last moment: what was removed beside it, or renamed above
  // it, has changed the change time, and that of a folder tells nothing.
  Status isSame(const MovingCalls& calls, int folder, const std::string& name, const std::string& path) const;

 private:
  std::unordered_map<std::string, ItemLook> items_;
};

// Moves a file, a folder or a link by a copy, as FileSystem::move() says. The copy is in place and on disk before the
// original goes. The folders of both places are open, as far as they may be; the paths are for messages.
Result<Notes> moveByCopying(const MovingCalls& calls, const Place& from, const Place& to, const std::string& source,
                            const std::string& destination);

}  // namespace vantory
