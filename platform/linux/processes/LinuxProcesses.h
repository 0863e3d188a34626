// Starts child processes.
#pragma once

#include "platform/Processes.h"

namespace vantory {

// Programs start with signals as by default, no open files but their streams (standard input is the null device), the
// working folder of this process, and an environment of PATH, LANG and, unless this is the superuser's process, the few
// variables that tools need to find the user's home, time zone and desktop session. Any thread.
class LinuxProcesses : public Processes {
 public:
  Result<std::unique_ptr<Process>> start(const std::string& program, const std::vector<std::string>& arguments,
                                         Streams streams) override;
};

}  // namespace vantory
