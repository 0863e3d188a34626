// What differs between two property lists, value by value.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/KeyPath.h"
#include "base/PropertyList.h"

namespace vantory {

// A value that was added, removed or changed; what a dictionary or an array holds that came or went as a whole is not
// told apart.
struct KeyChange {
  KeyPath path;                        // empty for the whole property list
  std::optional<PropertyList> before;  // none where there was none
  std::optional<PropertyList> after;   // none where there is none any more
};

// In the order of `before`, what was added behind that. Values of arrays are compared by their index.
std::vector<KeyChange> changesBetween(const PropertyList& before, const PropertyList& after);

// A value in one short line: texts in quotation marks and cut, data and what holds other values by their size, dates by
// the user's clock, yes and no as 1 and 0.
std::string valueInShort(const PropertyList& value);
// Both values, which are there; told apart where their short lines are the same.
std::pair<std::string, std::string> valuesInShort(const KeyChange& change);
// "1 → 0"; "+ 1" for one that was added and "- 1" for one that was removed.
std::string changeInShort(const KeyChange& change);

}  // namespace vantory
