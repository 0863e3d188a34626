// The checksum in an extended attribute of an open file.
#pragma once

#include <optional>
#include <string>

namespace vantory {

// The value of an attribute, as a rule a short one; none when the file has none, or its file system knows no
// attributes. What is too long or cannot be read is nothing that could be right: an empty text.
std::optional<std::string> carriedText(int file, const char* attribute);

// False, with errno, when the file cannot carry it.
bool carryText(int file, const char* attribute, const std::string& text);

}  // namespace vantory
