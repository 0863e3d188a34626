// Compares names in which "*" stands for any run of characters.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vantory {

// Whether there is a name that both match. Byte by byte.
bool couldBothMatch(std::string_view one, std::string_view other);
// Whether all components that both have could be the same: then one is the other, or lies inside it.
bool couldMeet(const std::vector<std::string>& one, const std::vector<std::string>& other);
// Of a path or pattern, each folded.
std::vector<std::string> foldedComponents(std::string_view pattern);
// As disks without a difference between capital and small letters take it, as far as the result may be ASCII.
std::string foldedForDisks(std::string_view name);

}  // namespace vantory
