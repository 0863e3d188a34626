// Asked before the files of an application are touched.
#pragma once

#include <functional>
#include <string>

namespace vantory {

enum class GuardDecision : int { NotKnown = -2, NotRunning = -1, CloseAndRelaunch = 0, Skip = 1, Cancel = 2 };

class RunningApplicationGuard {
 public:
  virtual ~RunningApplicationGuard() = default;

  // What to do about the application: nothing when it does not run, or nobody can tell, else what the user (or, without
  // a window, the flag) decides. May block for the user's answer.
  virtual GuardDecision checkRunningAppsForName(const std::string& name, const std::string& bundleID,
                                                bool closeAutomatically) = 0;
  // Asks the application to quit and waits, at most 32 seconds; true once no copy of it runs. The wait ends early when
  // `isCancelled`, which may be empty, answers true.
  virtual bool closeAppWithName(const std::string& name, const std::string& bundleID,
                                const std::function<bool()>& isCancelled) = 0;
};

}  // namespace vantory
