// The applications of the user's desktop session, through the desktop helper program.
#pragma once

#include "platform/Workspace.h"

namespace vantory {

class DesktopHelper;
class Users;

// A bundle identifier is the id of a desktop entry, without ".desktop", and the application's name on the session bus.
// Where there is neither such an entry nor a bus, nothing runs, and the helper program is not started.
class LinuxWorkspace : public Workspace {
 public:
  // Both outlive it.
  LinuxWorkspace(DesktopHelper& helper, const Users& users) : helper_(helper), users_(users) {}

  Result<bool> isRunning(const std::string& bundleIdentifier) const override;
  Status quitApplication(const std::string& name, const std::string& bundleIdentifier) override;
  std::optional<std::string> applicationPath(const std::string& bundleIdentifier) const override;
  Status launchApplication(const std::string& bundleIdentifier) override;
  Status openFile(const std::string& path, const std::string& bundleIdentifier) override;
  Status activateApplication(const std::string& bundleIdentifier) override;

 private:
  bool mayRun(const std::string& bundleIdentifier) const;

  DesktopHelper& helper_;
  const Users& users_;
};

}  // namespace vantory
