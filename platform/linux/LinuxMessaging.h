// Talking to a task's client and to the desktop's notification service, through the desktop helper program.
#pragma once

#include "platform/Messaging.h"

namespace vantory {

class DesktopHelper;
class Users;

class LinuxTaskClient : public TaskClient {
 public:
  bool connect(const std::string& service) override;
  bool understands(const std::string& message) override;
  Status send(const std::string& message, const std::vector<std::string>& arguments) override;
};

// org.freedesktop.Notifications on the session bus.
class LinuxDesktopNotifications : public DesktopNotifications {
 public:
  // Both outlive it.
  LinuxDesktopNotifications(DesktopHelper& helper, const Users& users) : helper_(helper), users_(users) {}

  Status post(const std::string& title, const std::string& text, const std::string& context) override;
  void listen(Listener listener) override;

 private:
  DesktopHelper& helper_;
  const Users& users_;
};

}  // namespace vantory
