// The applications on the user's desktop.
#pragma once

#include <optional>
#include <string>

#include "base/Result.h"

namespace vantory {

// Any thread. Nothing here waits for an application for longer than it takes to reach it, half a minute at most.
class Workspace {
 public:
  virtual ~Workspace() = default;

  // Whether any copy of the application with exactly this bundle identifier runs. Fails when that cannot be told.
  virtual Result<bool> isRunning(const std::string& bundleIdentifier) const = 0;
  // Whether every copy of it that runs can be asked to quit; where not, only the user can do it.
  virtual Result<bool> canBeAskedToQuit(const std::string& bundleIdentifier) const = 0;
  // Asks every copy of an application politely to quit, so that it can ask about unsaved work; does not wait for it.
  // Fails (operation_not_supported) after asking the others where a copy cannot be asked.
  virtual Status quitApplication(const std::string& name, const std::string& bundleIdentifier) = 0;

  // For the rest an identifier in another case finds the application too.

  // Where the application, or what declares it, lies; none when it is not installed.
  virtual std::optional<std::string> applicationPath(const std::string& bundleIdentifier) const = 0;
  // Starts an application; does not wait for it.
  virtual Status launchApplication(const std::string& bundleIdentifier) = 0;
  // Opens a file, by its full path, with an application; does not wait for it.
  virtual Status openFile(const std::string& path, const std::string& bundleIdentifier) = 0;
  // Brings a running application to the front where the desktop lets others do that.
  virtual Status activateApplication(const std::string& bundleIdentifier) = 0;
  // Runs a text in the desktop's own scripting language, which must be the program's own, and waits for its end. Fails
  // with not_supported where there is none.
  virtual Status runScript(const std::string& script) = 0;
};

}  // namespace vantory
