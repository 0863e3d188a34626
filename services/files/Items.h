// Whether something bears a name, and what a folder holds, as the user whose files are handled sees it.
#pragma once

#include <string>
#include <vector>

namespace vantory {

// A dangling link counts.
bool itemExists(const std::string& path);
// Whether it is certain that nothing bears this name; false where that cannot be told.
bool isItemMissing(const std::string& path);
// In the order the system lists them; none when the folder cannot be read.
std::vector<std::string> namesIn(const std::string& folder);

}  // namespace vantory
