// Items by their names in open folders: found, hidden, and removed with all that they hold.
#pragma once

#include <fcntl.h>

#include <functional>
#include <string>
#include <vector>

#include "base/Result.h"
#include "platform/FileSystem.h"
#include "platform/macos/darwin/Darwin.h"
#include "platform/posix/files/Descriptor.h"

namespace vantory::macos {

// A name in an open folder; with no folder open the name is a whole path.
struct Place {
  Descriptor folder;
  std::string name;

  int at() const { return folder.valid() ? folder.get() : AT_FDCWD; }
};

// An absolute path as one whole name.
Result<Place> locate(const std::string& path);
// The folder that the path's last component lies in, open. One that may be passed but not read stays a path.
Result<Place> openFolderOf(const std::string& path);
// What lies below an open folder, reached without any link. An invalid descriptor leaves errno.
Descriptor openBeneath(int folder, const std::string& relative, int flags);

bool isSameItem(const darwin::ItemStatus& left, const darwin::ItemStatus& right);
// Whether an item was left alone between two looks.
bool isUnchanged(const darwin::ItemStatus& before, const darwin::ItemStatus& after);

// The entries of a folder that is open for reading, from its beginning.
Result<std::vector<DirectoryEntry>> readFolder(int folder, const std::string& path, Detail detail);
// A folder, and those above it, private where they are new.
Status createFolders(const std::string& path);

// Gives a name that nothing has. Also where the volume cannot promise that, which is then looked for first.
int renameKeeping(int fromFolder, const std::string& from, int toFolder, const std::string& to);
// Moves an item, also a folder that its mode closes to its owner.
Status renameItem(const Place& from, const Place& to, const std::string& path);

// How deep a folder may nest to be copied or deleted.
inline constexpr int kDeepestFolder = 256;

// Asked before an item is deleted, or a folder entered for that: a failure ends the deletion there.
using RemovalCheck = std::function<Status(int folder, const std::string& name, const std::string& path)>;

// Deletes an item, a folder with all it holds. Never follows a link and never leaves the volume.
Status removeItem(int folder, const std::string& name, const std::string& path, const RemovalCheck& check = {});

}  // namespace vantory::macos
