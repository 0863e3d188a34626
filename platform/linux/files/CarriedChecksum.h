// The checksum in an extended attribute of an open file.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace vantory {

class Checksum;

// The value of an attribute, as a rule a short one; none when the file has none, or its file system knows no
// attributes. What is too long or cannot be read is nothing that could be right: an empty text.
std::optional<std::string> carriedText(int file, const char* attribute);

// False, with errno, when the file cannot carry it.
bool carryText(int file, const char* attribute, const std::string& text);

// Adds what an open file holds, from its beginning, to a checksum. Hears of each step, in bytes; false from there, with
// errno, ends it, as an error does: then it answers false too.
bool addContent(int file, Checksum& checksum, const std::function<bool(std::size_t bytes)>& step);

}  // namespace vantory
