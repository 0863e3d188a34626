#include "platform/linux/LinuxMessaging.h"

#include <chrono>
#include <utility>

#include "platform/linux/DesktopHelper.h"
#include "platform/linux/DesktopSession.h"

namespace vantory {

namespace {

// The helper program gives up after two seconds; this is for one that hangs.
constexpr std::chrono::seconds kPatience{3};

}  // namespace

bool LinuxTaskClient::connect(const std::string&) {
  return false;
}

bool LinuxTaskClient::understands(const std::string&) {
  return false;
}

Status LinuxTaskClient::send(const std::string&, const std::vector<std::string>&) {
  return Error{std::errc::not_connected, "No task client is connected."};
}

Status LinuxDesktopNotifications::post(const std::string& title, const std::string& text, const std::string& context) {
  if (!hasSessionBus(users_)) return Error{std::errc::no_such_device_or_address, "There is no desktop session."};
  const Result<Message> posted = helper_.ask({"notify", title, text, context}, kPatience);
  if (!posted) return posted.error();
  return {};
}

void LinuxDesktopNotifications::listen(Listener listener) {
  for (const auto& [event, outcome] : {std::pair("clicked", Outcome::Clicked), std::pair("expired", Outcome::TimedOut)})
    helper_.handle(
        event, !listener ? DesktopHelper::EventHandler() : [listener, outcome](const Message& values) {
          if (!values.empty()) listener(outcome, values.front());
        });
}

}  // namespace vantory
