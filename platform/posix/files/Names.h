// Names that the program gives to its own unfinished work on disk.
#pragma once

#include <string>
#include <string_view>

namespace vantory {

// The hidden name under which something that will be called `finalName` is put together in the same folder. It is the
// same at every attempt, so that the next one finds and clears what a killed one left; `attempt` tells apart several
// that are under way at once.
std::string stagingName(std::string_view finalName, int attempt = 0);

// The largest number of bytes in a file name.
inline constexpr std::size_t kLongestName = 255;

}  // namespace vantory
