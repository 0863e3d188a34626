// Desktop notifications.
#pragma once

#include <string>

#include "base/Timestamp.h"

namespace vantory {

class QWGrowl {
 public:
  // Shows a notification, unless the user switched them off for all of the maker's programs. A failure is logged.
  static void postGrowlNotification(const std::string& title, const std::string& description);

  // What the desktop tells of a notification, any thread: called out in the program as "QWGrowlAlertClicked" and
  // "QWGrowlAlertTimedOut", on the main thread, with the date it was posted under "clickContext".
  static void growlNotificationWasClicked(Timestamp clickContext);
  static void growlNotificationTimedOut(Timestamp clickContext);
};

}  // namespace vantory
