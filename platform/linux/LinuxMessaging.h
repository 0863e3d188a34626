// Talking to a task's client and to the desktop's notification service. Neither is available in this version.
#pragma once

#include "platform/Messaging.h"

namespace vantory {

class LinuxTaskClient : public TaskClient {
 public:
  bool connect(const std::string& service) override;
  bool understands(const std::string& message) override;
  Status send(const std::string& message, const std::vector<std::string>& arguments) override;
};

class LinuxDesktopNotifications : public DesktopNotifications {
 public:
  Status post(const std::string& title, const std::string& text) override;
};

}  // namespace vantory
