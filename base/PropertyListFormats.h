// The forms of property lists one by one, and what they share. Only the sources of property lists, and of JSON,
// include this.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "base/PropertyList.h"

namespace vantory {

// Thrown by everything below that reads, caught by parsePropertyList().
struct DamagedPropertyList {
  std::optional<std::size_t> offset = {};  // bytes of the text that made sense, where that is known
};

// Arrays and dictionaries inside each other, the outermost included.
constexpr int kMaximumPropertyListDepth = 512;

enum class PropertyListForm { Binary, Xml, Text };
// By the first bytes.
PropertyListForm formOfPropertyList(std::string_view bytes);

inline constexpr std::size_t kLargestXml = 4 * 1024 * 1024;

// XML of any encoding that it declares or betrays by its first bytes; at most kLargestXml bytes.
PropertyList parseXmlPropertyList(std::string_view bytes);
PropertyList parseBinaryPropertyList(std::string_view bytes);
PropertyList parseTextPropertyList(std::string_view utf8);
// As writeTextPropertyList(), but all data is in hexadecimal, whatever its bytes are.
std::string writeTextWithData(const PropertyList& value);

// The element of one value alone, indented by so many tabs, each line with its end.
std::string xmlElement(const PropertyList& value, std::size_t level);
// The element of a key that XML can hold, without a line's end.
std::string xmlKeyElement(std::string_view key);

// Text in UTF-8, or in UTF-16 with a byte order mark, as UTF-8 without one. `storage` holds it where it had to be
// converted.
std::string_view decodedText(std::string_view bytes, std::string& storage);

enum class ByteOrder { BigEndian, LittleEndian };
// Refuses halves of pairs.
std::string utf8FromUtf16(std::string_view bytes, ByteOrder order);

// "2026-11-14T21:35:17Z"; the fraction is dropped, and the nearest date is taken for one that has no four-digit year.
std::string propertyListDate(const Timestamp& date);
Timestamp parsePropertyListDate(std::string_view text);
// Whether the date's year has at most four digits and no sign.
bool isPropertyListDate(double secondsSince1970);

// The digits of the shortest number that reads back the same; "nan", "+infinity" or "-infinity".
std::string propertyListReal(double value);

std::string base64(std::string_view bytes);
// White space anywhere is skipped; padding may be missing.
std::string parseBase64(std::string_view text);

}  // namespace vantory
