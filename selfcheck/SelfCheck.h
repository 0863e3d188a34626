// Whether the platform keeps its promises on this machine.
#pragma once

#include <string>
#include <vector>

#include "selfcheck/Check.h"

namespace vantory {

struct Checked {
  std::string part;
  std::string promise;
  Finding finding;
};

// Works through every function of the platform that can be tried without a trace, in a folder of its own in `parent`,
// which is gone afterwards. Takes a few seconds, where the desktop hangs a minute. On the main thread.
std::vector<Checked> checkPlatform(Platform& platform, const std::string& parent);

}  // namespace vantory
