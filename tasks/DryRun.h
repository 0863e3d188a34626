// Surroundings in which a task changes nothing: what it would do is recorded.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "base/Result.h"
#include "platform/overlay/OverlayPlatform.h"
#include "services/Runtime.h"
#include "tasks/AppController.h"
#include "tasks/QWVantoryUtilities.h"

namespace vantory {

// While one exists it is what everything runs in. On the main thread.
class DryRun {
 public:
  // `arguments` stand for the process's own, the program first. Messages go to `errors`.
  DryRun(std::vector<std::string> arguments, std::ostream& errors);

  // Fails, with the reason told, where there is no home folder or library to work in.
  Status begin(bool usesBackups);

  const AppController& controller() const { return controller_; }
  const std::vector<Change>& changes() const { return overlay_.changes().all(); }
  // Where an item lies now: some are tidied away before they are shown.
  std::string placeOnDisk(const std::string& path) const { return overlay_.placeOnDisk(path); }

 private:
  std::ostream& errors_;
  OverlayPlatform overlay_;
  Runtime runtime_;
  QWVantoryUtilities guard_;
  AppController controller_;
};

}  // namespace vantory
