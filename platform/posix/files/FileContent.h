// Reading what an open file holds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "base/Result.h"

namespace vantory {

class Checksum;

// Adds what an open file holds, from its beginning, to a checksum. Hears of each step, in bytes; false from there, with
// errno, ends it, as an error does: then it answers false too. `size` is what the file is believed to hold.
bool addContent(int file, std::uint64_t size, Checksum& checksum, const std::function<bool(std::size_t bytes)>& step);

// Whether two open files hold the same, to their ends.
Result<bool> haveSameContent(int file, const std::string& path, int other, const std::string& otherPath);

}  // namespace vantory
