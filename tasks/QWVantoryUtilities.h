// Keeps tasks away from the files of running applications.
#pragma once

#include <string>

#include "services/RunningApplicationGuard.h"

namespace vantory {

// With a window the user decides about each running application, without one the caller's flag does.
class QWVantoryUtilities : public RunningApplicationGuard {
 public:
  GuardDecision checkRunningAppsForName(const std::string& name, const std::string& bundleID,
                                        bool closeAutomatically) override;
  bool closeAppWithName(const std::string& name, const std::string& bundleID,
                        const std::function<bool()>& isCancelled = {}) override;

  // Asks the application to quit and does not wait for it; a failure goes to the log and the task client.
  static void sendQuitEventToApp(const std::string& name, const std::string& bundleID);
};

}  // namespace vantory
