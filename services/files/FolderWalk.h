// Going through a folder and everything below it.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "platform/FileSystem.h"

namespace vantory {

// Called with the full path of an entry that is no folder; false ends the walk.
using FileVisitor = std::function<bool(const std::string& path, const DirectoryEntry& entry)>;

enum class Unreadable { PassOver, End };

// Visits every entry that is no folder, at all depths, in the order the system lists them; `unreadable` says what a
// folder that cannot be read does. With Links::Follow a link to a folder counts as one, but none is entered that the
// walk is inside of already, and each only once through a link. False when the walk was ended early.
bool walkFolder(const std::string& folder, Detail detail, Links links, const FileVisitor& visit,
                Unreadable unreadable = Unreadable::PassOver);

// The bytes of all files below the folder. With Links::Follow a folder counts each time that a link leads to it, but
// for links to one that holds them; otherwise a link counts as what it is itself.
std::uint64_t folderSize(const std::string& folder, Links links);

// A visitor that goes on past the files that a desktop leaves behind, and ends the walk at any other.
bool isHousekeepingEntry(const std::string& path, const DirectoryEntry& entry);

}  // namespace vantory
