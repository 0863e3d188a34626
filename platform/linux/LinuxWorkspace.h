// The applications of the user's desktop session. This version cannot see or reach them.
#pragma once

#include "platform/Workspace.h"

namespace vantory {

class LinuxWorkspace : public Workspace {
 public:
  std::vector<std::string> runningApplications() const override;
  Status quitApplication(const std::string& name, const std::string& bundleIdentifier) override;
  Status launchApplication(const std::string& bundleIdentifier) override;
};

}  // namespace vantory
