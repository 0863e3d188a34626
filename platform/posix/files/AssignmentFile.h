// Small files of KEY=value lines in shell syntax: os-release, user-dirs.dirs, the login service's state files.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vantory {

// The value last given to the key, quotes and escapes removed, variables left as they are. None when the file is no
// readable regular file or does not name the key. Only the first 64 KiB are looked at.
std::optional<std::string> assignedValue(const std::string& path, std::string_view key);

}  // namespace vantory
