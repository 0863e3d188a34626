// Moving the backups of the library to another folder.
#pragma once

#include <string>

#include "services/TaskReport.h"

namespace vantory {

// Moves what has a backup's name in the folder and in its "Autosaves"; everything else, and what has no place in the
// new folder or is being written, stays. Any thread.
[[nodiscard]] TaskReport moveLibrary(const std::string& from, const std::string& to);

// Whether a library's folder may hold something to move: it does hold a file, or cannot be read to its end.
bool mayHoldBackups(const std::string& folder);

// Why that folder cannot be the library's, as a sentence; empty when it can.
std::string reasonAgainstLibrary(const std::string& folder);

}  // namespace vantory
