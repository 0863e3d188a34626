// Paths written the one way in which they can be compared.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vantory {

// The path without needless slashes and dots. None when it is not absolute, or climbs with "..".
std::optional<std::string> plainPath(std::string_view path);

}  // namespace vantory
