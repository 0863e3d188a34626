// Switches shared by all of the maker's programs.
#pragma once

#include <string>

namespace vantory {

// Whether the switch in the user's "com.quarrywell.global.plist" is on: boolean true, a number equal to it, or the text
// "1". Anything else, and a missing or damaged file, is off.
bool globalSwitch(const std::string& key);

}  // namespace vantory
