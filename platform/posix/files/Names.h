// Names of the program's own unfinished work, and paths written the one way in which they can be compared.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vantory {

// The hidden name under which something that will be called `finalName` is put together in the same folder. It is the
// same at every attempt, so that the next one finds and clears what a killed one left; `attempt` tells apart several
// that are under way at once.
std::string stagingName(std::string_view finalName, int attempt = 0);

// The path without needless slashes and dots. None when it is not absolute, or climbs with "..".
std::optional<std::string> plainPath(std::string_view path);

}  // namespace vantory
