// Desktop notifications.
#pragma once

#include <string>

namespace vantory {

class QWGrowl {
 public:
  // Shows a notification, unless the user switched them off for all of the maker's programs. A failure is logged.
  static void postGrowlNotification(const std::string& title, const std::string& description);
};

}  // namespace vantory
