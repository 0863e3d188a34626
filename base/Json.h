// JSON, for scripts.
#pragma once

#include <string>

#include "base/PropertyList.h"

namespace vantory {

// The value as strict JSON in UTF-8, indented, without a line end after the last character. Dates become texts such as
// "2026-11-14T21:35:17Z". What is no UTF-8, and data, becomes an object with the one key "base64": its bytes. A date
// beyond all years becomes null, and so does a number that JSON cannot write.
std::string writeJson(const PropertyList& value);

}  // namespace vantory
