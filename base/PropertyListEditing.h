// Changing single values of a property list that others wrote.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/KeyPath.h"

namespace vantory {

using KeyEdit = std::pair<KeyPath, PropertyList>;

// The bytes with each value put at its path, one after the other, in the form that they have. In XML every other byte
// stays, as far as the encoding can hold the new values; in the other forms every other value, but comments go. None
// where the bytes are no property list, a path leads nowhere, or the form cannot hold the whole; in text form also
// where quotes hold bytes that are no UTF-8, which could come back as data.
std::optional<std::string> editedPropertyList(std::string_view bytes, const std::vector<KeyEdit>& edits);

}  // namespace vantory
