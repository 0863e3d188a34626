// Where in the bytes of an XML property list a value is written.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "base/KeyPath.h"

namespace vantory {

struct XmlPlace {
  std::size_t begin;
  std::size_t end;
  bool isNew;  // nothing is written there yet: it is behind the last value of its dictionary or array
};

// Of a value that is there, or that is to be added; none where that cannot be told. The bytes are known to be a
// property list, in UTF-8 or an encoding like it.
std::optional<XmlPlace> placeInXml(std::string_view bytes, const KeyPath& path);

}  // namespace vantory
