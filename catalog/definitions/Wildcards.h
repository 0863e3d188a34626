// Compares names in which "*" stands for any run of characters.
#pragma once

#include <string>
#include <string_view>

namespace vantory {

// Whether there is a name that both match. Byte by byte.
bool couldBothMatch(std::string_view one, std::string_view other);
// As disks without a difference between capital and small letters take it, as far as the result may be ASCII.
std::string foldedForDisks(std::string_view name);

}  // namespace vantory
