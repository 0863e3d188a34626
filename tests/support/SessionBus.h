// A session bus of a test's own, and programs on it that are not ours.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/linux/helpers/HelperProcess.h"
#include "tests/support/DesktopFolders.h"
#include "tests/support/EnvironmentChange.h"
#include "tests/support/ScratchFolder.h"

namespace vantory::test {

// A bus where nobody is yet. While it exists it is the session bus of this process and of what this process starts.
class SessionBus {
 public:
  // It may start the services of that folder.
  explicit SessionBus(const std::string& services = "/nowhere");

  // Why this machine can have none; empty when it can.
  static std::string missing();

  // Starts tests/peers/SCRIPT, which tells what it hears through its channel, and waits until it is on the bus.
  HelperProcess start(const std::string& script, std::vector<std::string> arguments = {}) const;
  // Lets the daemon go on, or stand still.
  void signal(int number) const;

 private:
  ScratchFolder folder_;
  EnvironmentChange address_;
  std::optional<Running> daemon_;
};

// The next thing the peer tells; empty when it tells nothing within the time.
Message heardBy(HelperProcess& peer, std::chrono::milliseconds limit = std::chrono::seconds(10));

}  // namespace vantory::test
