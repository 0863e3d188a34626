// The files of projects that a backup can be linked to.
#pragma once

#include <optional>
#include <string>

namespace vantory {

// Why the file cannot be linked, as the end of a sentence that begins with its name; none when it can.
std::optional<std::string> reasonNotToLink(const std::string& path);

}  // namespace vantory
