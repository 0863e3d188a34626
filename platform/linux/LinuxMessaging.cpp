#include "platform/linux/LinuxMessaging.h"

namespace vantory {

bool LinuxTaskClient::connect(const std::string&) {
  return false;
}

bool LinuxTaskClient::understands(const std::string&) {
  return false;
}

Status LinuxTaskClient::send(const std::string&, const std::vector<std::string>&) {
  return Error{std::errc::not_connected, "No task client is connected."};
}

Status LinuxDesktopNotifications::post(const std::string&, const std::string&) {
  return Error{std::errc::not_supported, "Desktop notifications are not available in this version."};
}

}  // namespace vantory
