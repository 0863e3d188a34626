// The applications that run on the user's desktop.
#pragma once

#include <string>
#include <vector>

#include "platform/Result.h"

namespace vantory {

class Workspace {
 public:
  virtual ~Workspace() = default;

  // The bundle identifiers of the running applications, one for each running copy.
  virtual std::vector<std::string> runningApplications() const = 0;
  // Asks an application politely to quit; does not wait for it.
  virtual Status quitApplication(const std::string& name, const std::string& bundleIdentifier) = 0;
  // Starts an application; does not wait for it.
  virtual Status launchApplication(const std::string& bundleIdentifier) = 0;
};

}  // namespace vantory
