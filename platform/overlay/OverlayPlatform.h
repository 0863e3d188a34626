// The platform with everything that would change recorded instead of done.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "platform/Platform.h"
#include "platform/overlay/OverlayChecksums.h"
#include "platform/overlay/OverlayFileSystem.h"
#include "platform/overlay/OverlayMetadata.h"
#include "platform/overlay/OverlayRunner.h"
#include "platform/overlay/StillServices.h"

namespace vantory {

// Clock, users and folders are the real ones. Messages to the system's log go to `errors` only.
class OverlayPlatform {
 public:
  // Both outlive it. `arguments` stand for the process's own, the program first.
  OverlayPlatform(const Platform& real, std::vector<std::string> arguments, std::ostream& errors);

  Platform& platform() { return platform_; }
  const Changes& changes() const { return changes_; }
  // Where something that the overlay shows at a path lies on the disk.
  std::string placeOnDisk(const std::string& path) const { return tree_.placeOnDisk(path); }

 private:
  Changes changes_;
  OverlayTree tree_;
  OverlayFileSystem files_;
  OverlayMetadata metadata_;
  OverlayChecksums checksums_;
  OverlayRunner privileged_;
  StreamLog systemLog_;
  OtherArguments system_;
  StillProcesses processes_;
  StillWorkspace workspace_;
  StillDocuments documents_;
  StillDefaultHandlers defaultHandlers_;
  StillTaskClient taskClient_;
  StillNotifications notifications_;
  StillAnnouncements announcements_;
  StillJobControl jobs_;
  StillCrashReports crashReports_;
  Platform platform_;
};

}  // namespace vantory
