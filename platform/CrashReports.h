// What the operating system keeps of programs that crashed.
#pragma once

#include <optional>
#include <string>

#include "platform/Clock.h"

namespace vantory {

class CrashReports {
 public:
  virtual ~CrashReports() = default;

  // The newest report or memory dump of this program, run by the user whose files are handled, that was kept after that
  // moment: its full path. None when there is none or the system keeps none.
  virtual std::optional<std::string> newestSince(Timestamp moment) const = 0;
};

}  // namespace vantory
