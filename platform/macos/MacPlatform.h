// The platform on macOS, put together for the process that runs.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/Platform.h"
#include "platform/macos/rights/Identity.h"

namespace vantory {

class ProgressLine;

// Made once, at the start of main(). The process works with its own rights. What takes the superuser's, and the
// machine's log, a process that became the user at the console has the one do that it comes from.
class MacPlatform {
 public:
  // Whether a task that takes long shows how far it is, where standard error is a terminal.
  enum class Progress { Hidden, Shown };

  // For a program that another became, `startedProgram` is the file name of the one beside it that the user started.
  explicit MacPlatform(std::vector<std::string> arguments, Progress progress = Progress::Hidden,
                       MacIdentity identity = ownIdentity(), std::string startedProgram = {});
  ~MacPlatform();

  Platform& platform() { return *platform_; }
  // Null where nothing is shown.
  ProgressLine* progressLine() const;

 private:
  struct Parts;

  std::unique_ptr<Parts> parts_;
  std::unique_ptr<Platform> platform_;
};

}  // namespace vantory
