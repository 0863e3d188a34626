// Reaches the maker's update application.
#pragma once

#include <string>

namespace vantory {

class QWSoftwareUpdate {
 public:
  // Where the update application lies: the installed one, or a temporary copy of the one that travels with the program
  // when that is newer. The path is answered whether or not it exists.
  static std::string updaterPath();
  // Opens it. The log says when that fails. May take half a minute.
  static void launchSoftwareUpdate();

  // At the program's start: a check in the background, where the user has switched that on.
  void startup();
  // When the user asks for one; as launchSoftwareUpdate().
  void manualUpdateCheck();

 private:
  static void automaticallyCheckForUpdates();
};

}  // namespace vantory
