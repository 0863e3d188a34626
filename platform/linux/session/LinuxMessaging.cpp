#include "platform/linux/session/LinuxMessaging.h"

#include <chrono>

#include "platform/linux/helpers/DesktopHelper.h"
#include "platform/linux/session/DesktopSession.h"

namespace vantory {

namespace {

// The helper program gives up after three seconds; this is for one that hangs.
constexpr std::chrono::seconds kPatience{4};

Error noSession() {
  return {std::errc::no_such_device_or_address, "There is no desktop session."};
}

}  // namespace

Result<TaskClient::Answer> LinuxTaskClient::send(const std::string& service, const TaskMessage& message) {
  if (!hasSessionBus(users_)) return Answer::NotRegistered;
  Message request = {"tell-client", service, message.name};
  request.insert(request.end(), message.arguments.begin(), message.arguments.end());
  const Result<Message> sent = helper_.ask(request, kPatience);
  if (sent) return Answer::Received;
  if (sent.error().code == std::errc::no_such_device_or_address) return Answer::NotRegistered;
  if (sent.error().code == std::errc::function_not_supported) return Answer::NotUnderstood;
  return sent.error();
}

Status LinuxDesktopNotifications::post(const std::string& title, const std::string& text, const std::string& context) {
  if (!hasSessionBus(users_)) return noSession();
  const Result<Message> posted = helper_.ask({"notify", title, text, context}, kPatience);
  if (!posted) return posted.error();
  return {};
}

void LinuxDesktopNotifications::listen(Listener listener) {
  const auto handler = [&listener](Outcome outcome) -> DesktopHelper::EventHandler {
    if (!listener) return nullptr;
    return [listener, outcome](const Message& values) {
      if (!values.empty()) listener(outcome, values.front());
    };
  };
  helper_.handle("clicked", handler(Outcome::Clicked));
  helper_.handle("expired", handler(Outcome::TimedOut));
}

Status LinuxAnnouncements::announce(const std::string& name) {
  if (!hasSessionBus(users_)) return noSession();
  const Result<Message> announced = helper_.ask({"announce", name}, kPatience);
  if (!announced) return announced.error();
  return {};
}

}  // namespace vantory
