// Folders that the environment names.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vantory {

// The folder without double or trailing slashes, "." and "..", decided on the text alone. None when it is not absolute.
std::optional<std::string> normalisedFolder(std::string_view text);

// The folder that an environment variable names; none when that is unset or not absolute. The superuser's process must
// not ask for anything but HOME.
std::optional<std::string> environmentFolder(const char* variable);

}  // namespace vantory
