// Files that other programs write and that are expected to be small.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "base/Result.h"

namespace vantory {

// The whole content of a regular file, links followed. Fails with file_too_large above the limit; a FIFO or device is
// refused (invalid_argument), never waited for.
Result<std::string> readSmallFile(const std::string& path, std::size_t limit);

// The value last given to the key, quotes and escapes removed, variables left as they are. None when the file is no
// readable regular file or does not name the key. Only the first 64 KiB are looked at.
std::optional<std::string> assignedValue(const std::string& path, std::string_view key);
// The same for a text.
std::optional<std::string> assignedValueIn(std::string_view text, std::string_view key);

}  // namespace vantory
