// Whether somebody works in a home at present, on this machine or another.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace vantory {

// A file that was changed within that time, where most preferences lie or right in the home; none when there is none.
// Files of this program do not count, links to files do. With the process's own rights; what cannot be read is passed
// over, and of very many files only the first are looked at.
std::optional<std::string> recentlyChangedFile(const std::string& home, std::chrono::seconds within);
// The same of these files and folders, of the latter with what they hold.
std::optional<std::string> recentlyChangedFile(const std::vector<std::string>& paths, std::chrono::seconds within);

}  // namespace vantory
