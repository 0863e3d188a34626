// The service manager of the user's login session, "launchd".
#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

#include "base/Result.h"
#include "platform/posix/processes/ToolRun.h"

namespace vantory {

// Speaks to it by "/bin/launchctl". Any thread.
class LaunchControl {
 public:
  // A run in progress is waited for no longer than the patience when its job is to be taken back, and the tool no
  // longer than the limit each time that it is asked.
  explicit LaunchControl(std::chrono::milliseconds patience = std::chrono::seconds(10),
                         std::chrono::milliseconds limit = std::chrono::seconds(10))
      : patience_(patience), limit_(limit) {}

  // Loads the job that the file describes. Fails where the user has no login session with a screen.
  Status load(uid_t user, const std::string& file) const;
  // Returns when the job is gone; one that is not loaded is success. A run in progress would be ended with its job: one
  // that goes on for too long keeps it loaded (device_or_resource_busy).
  Status unload(uid_t user, const std::string& label) const;
  // How a job is called when it is to be started.
  static std::string target(uid_t user, const std::string& label);

 private:
  enum class State { Missing, Waiting, Running };

  Result<ToolEnd> launchctl(std::vector<std::string> arguments) const;
  Result<State> stateOf(const std::string& target) const;

  const std::chrono::milliseconds patience_;
  const std::chrono::milliseconds limit_;
};

}  // namespace vantory
