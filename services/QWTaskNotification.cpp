#include "services/QWTaskNotification.h"

#include <chrono>
#include <stdexcept>
#include <vector>

#include "platform/Clock.h"
#include "platform/Messaging.h"
#include "services/QWException.h"
#include "services/Runtime.h"

namespace vantory {

namespace {

constexpr const char* kProcessName = "Vantory";

struct Message {
  std::string name;
  std::vector<std::string> arguments;
};

bool connectToAnyClient(TaskClient& client) {
  return client.connect("QWProClientCallback") || client.connect("QWGearwrightClientCallback");
}

// Sends the first of the messages that the client understands.
void post(const char* operation, const std::vector<Message>& messages) {
  const Platform& platform = Runtime::current().platform();
  TaskClient& client = platform.taskClient;
  if (!connectToAnyClient(client)) return;
  for (const Message& message : messages) {
    if (!client.understands(message.name)) continue;
    const Status sent = client.send(message.name, message.arguments);
    if (!sent) QWException::logException(std::runtime_error(sent.error().text), operation);
    platform.clock.sleep(std::chrono::milliseconds(15));
    return;
  }
}

}  // namespace

void QWTaskNotification::postTaskErrorString(const std::string& text) {
  post("postTaskErrorString:", {{"postErrorString:userInfo:", {text, kProcessName}}, {"postErrorString:", {text}}});
}

void QWTaskNotification::postTaskError(const std::string& error) {
  post("postTaskError:", {{"postError:forApp:", {error, kProcessName}}, {"postError:", {error}}});
}

void QWTaskNotification::postTaskFinished() {
  post("postTaskFinished", {{"postFinishedTask", {}}});
}

void QWTaskNotification::postIncrementProgress() {
  post("postIncrementProgress", {{"incrementRemoteProgress", {}}});
}

void QWTaskNotification::postDisconnect() {
  post("postDisconnect", {{"postDisconnect", {}}});
}

}  // namespace vantory
