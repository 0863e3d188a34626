// The layout of macOS below a home and below "/", which all systems share so that backups fit each of them.
#pragma once

#include <optional>
#include <string>

#include "platform/StandardFolders.h"

namespace vantory {

// The user's folder; none for the Trash, which each system keeps elsewhere, and for those that only the machine has.
std::optional<std::string> folderInHome(StandardFolder folder, const std::string& home);
// The machine's, below `root`; none for folders that only users have.
std::optional<std::string> folderOfMachine(StandardFolder folder, const std::string& root);

}  // namespace vantory
