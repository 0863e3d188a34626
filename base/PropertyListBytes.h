// Property lists as bytes: reading their three forms, writing two of them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/PropertyList.h"

namespace vantory {

// Reads a property list in any of its three forms: XML (UTF-8, UTF-16, UTF-32 or, where it declares it, Latin-1; up to
// 4 MiB), the old text notation (UTF-8 or UTF-16), and binary "bplist00". None when the bytes are damaged, nest deeper
// than 512 levels, claim more than they hold, or hold a number beyond 64 bits, a date outside the years 0 to 9999 or an
// archive's references. Never reads outside `bytes`; for every input memory grows linearly with their length, time
// hardly faster (keys are sorted).
std::optional<PropertyList> parsePropertyList(std::string_view bytes);

// The line, from 1, where bytes that parsePropertyList() refuses make no sense any more; none where that is not known.
std::optional<int> lineOfDamage(std::string_view bytes);

// The XML form. Text that XML cannot hold (no UTF-8, or control characters) is written as data, in a key
// percent-escaped so that it differs from all others of its dictionary; dates lose their fraction of a second, and
// those outside the years 0 to 9999 become the nearest inside. Otherwise parsePropertyList() gives equal values back.
std::string writeXmlPropertyList(const PropertyList& value);

// The binary form; a text that is no UTF-8 is written as data. parsePropertyList() gives equal values back.
std::string writeBinaryPropertyList(const PropertyList& value);

// The old text notation, as used on standard output: indented by four blanks a level, strings quoted where they must
// be, no line end after the last character. Bytes that are no UTF-8 are written as octal escapes, also those of data
// that stands for text; other data in hexadecimal. parsePropertyList() reads an array or a dictionary back, with every
// plain value as text.
std::string writeTextPropertyList(const PropertyList& value);

}  // namespace vantory
