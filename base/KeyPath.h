// Where in a property list a value stands, as text that people can type.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "base/PropertyList.h"

namespace vantory {

// From the whole inwards: the key of a dictionary, or the index of an array, counted from 0.
using KeyPath = std::vector<std::variant<std::string, std::size_t>>;

// "Timeline.Tracks[2].Name". In a key a "." or "[" has a backslash before it, as a backslash itself has; control
// characters, and bytes that are no UTF-8, are written as "\n" or "\xff". Nothing for the whole property list.
std::string keyPathText(const KeyPath& path);
// The same for a person: the whole has words; one that is empty, or has blanks at its ends, has quotes.
std::string keyPathInWords(const KeyPath& path);
// The reverse of keyPathText(); none where the text is no such path. An empty text is the key without letters.
std::optional<KeyPath> parseKeyPath(std::string_view text);

// Null where nothing stands there.
const PropertyList* valueAt(const PropertyList& whole, const KeyPath& path);
// The whole with the value put there: in place of what stands there, as a new key of a dictionary, or behind the last
// value of an array. None where there is no such dictionary or array.
std::optional<PropertyList> withValueAt(const PropertyList& whole, const KeyPath& path, const PropertyList& value);

}  // namespace vantory
