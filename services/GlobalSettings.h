// Switches shared by all of the maker's programs.
#pragma once

#include <optional>
#include <string>

#include "base/PropertyList.h"

namespace vantory {

// The value of a key in the user's "com.quarrywell.global.plist"; none when it, or a sound file, is missing.
std::optional<PropertyList> globalSetting(const std::string& key);

// Whether the switch in the user's "com.quarrywell.global.plist" is on: boolean true, a number equal to it, or the text
// "1". Anything else, and a missing or damaged file, is off.
bool globalSwitch(const std::string& key);

}  // namespace vantory
