// The platform on Linux, put together for the process that runs.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/Platform.h"

namespace vantory {

class ProgressLine;

// Made once, at the start of main(). An ordinary process works with its own rights. The superuser's process works with
// the rights of the user at the console, and with its own only where those do not suffice; with nobody at the console
// it can touch no user's file.
class LinuxPlatform {
 public:
  // Whether a task that takes long shows how far it is, where standard error is a terminal.
  enum class Progress { Hidden, Shown };

  // For a program that another became, `startedProgram` is the file name of the one beside it that the user started.
  explicit LinuxPlatform(std::vector<std::string> arguments, std::string startedProgram = {},
                         Progress progress = Progress::Hidden);
  ~LinuxPlatform();

  Platform& platform() { return *platform_; }
  // Null where nothing is shown.
  ProgressLine* progressLine() const;

 private:
  struct Parts;

  std::unique_ptr<Parts> parts_;
  std::unique_ptr<Platform> platform_;
};

}  // namespace vantory
