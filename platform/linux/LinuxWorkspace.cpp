#include "platform/linux/LinuxWorkspace.h"

namespace vantory {

std::vector<std::string> LinuxWorkspace::runningApplications() const {
  return {};
}

Status LinuxWorkspace::quitApplication(const std::string& name, const std::string&) {
  return Error{std::errc::not_supported, name + ": Quitting applications is not available in this version."};
}

Status LinuxWorkspace::launchApplication(const std::string& bundleIdentifier) {
  return Error{std::errc::not_supported,
               bundleIdentifier + ": Launching applications is not available in this version."};
}

}  // namespace vantory
