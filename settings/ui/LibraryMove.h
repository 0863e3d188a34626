// Moving the backups of the library to another folder.
#pragma once

#include <cstddef>
#include <string>

namespace vantory {

// Moves what has a backup's name in the folder and in its "Autosaves"; everything else, and what has no place in the
// new folder or is being written, stays. Answers how many backups stayed. Any thread.
std::size_t moveLibrary(const std::string& from, const std::string& to);

// Why that folder cannot be the library's, as a sentence; empty when it can.
std::string reasonAgainstLibrary(const std::string& folder);

}  // namespace vantory
