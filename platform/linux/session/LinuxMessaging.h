// Talking to a task's client, to the desktop's notification service and to other programs, through the desktop helper
// program.
#pragma once

#include "platform/Messaging.h"

namespace vantory {

class DesktopHelper;
class Users;

// Services are names on the session bus.
class LinuxTaskClient : public TaskClient {
 public:
  // Both outlive it.
  LinuxTaskClient(DesktopHelper& helper, const Users& users) : helper_(helper), users_(users) {}

  Result<Answer> send(const std::string& service, const TaskMessage& message) override;

 private:
  DesktopHelper& helper_;
  const Users& users_;
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

// Signals on the session bus.
class LinuxAnnouncements : public Announcements {
 public:
  // Both outlive it.
  LinuxAnnouncements(DesktopHelper& helper, const Users& users) : helper_(helper), users_(users) {}

  Status announce(const std::string& name) override;

 private:
  DesktopHelper& helper_;
  const Users& users_;
};

}  // namespace vantory
