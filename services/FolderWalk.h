// Going through a folder and everything below it.
#pragma once

#include <functional>
#include <string>

#include "platform/FileSystem.h"

namespace vantory {

// Called with the full path of an entry that is no folder; false ends the walk.
using FileVisitor = std::function<bool(const std::string& path, const DirectoryEntry& entry)>;

// Visits every entry that is no folder, at all depths, in the order the system lists them; folders that cannot be read
// are passed over. With Links::Follow a link to a folder counts as one, but none is entered that the walk is inside of
// already, and each only once through a link. False when the visitor ended the walk.
bool walkFolder(const std::string& folder, Detail detail, Links links, const FileVisitor& visit);

}  // namespace vantory
