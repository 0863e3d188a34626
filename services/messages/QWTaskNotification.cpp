// Sends reports to whichever client listens.
#include "services/messages/QWTaskNotification.h"

#include <chrono>
#include <stdexcept>
#include <vector>

#include "platform/Clock.h"
#include "platform/Messaging.h"
#include "services/Runtime.h"
#include "services/log/QWException.h"

namespace vantory {

namespace {

constexpr const char* kProcessName = "Vantory";

using Answer = TaskClient::Answer;

// What became of the messages: the first that the service understands is sent.
Result<Answer> post(TaskClient& client, const std::string& service, const std::vector<TaskMessage>& messages) {
  Result<Answer> answer = Answer::NotUnderstood;
  for (const TaskMessage& message : messages) {
    answer = client.send(service, message);
    if (!answer || *answer != Answer::NotUnderstood) break;
  }
  return answer;
}

// To the first service that is there; a failure is logged, and nobody else is tried.
void post(const char* operation, const std::vector<TaskMessage>& messages) {
  const Platform& platform = Runtime::current().platform();
  for (const char* service : {"QWProClientCallback", "QWGearwrightClientCallback"}) {
    const Result<Answer> answer = post(platform.taskClient, service, messages);
    if (!answer) QWException::logException(std::runtime_error(answer.error().text), operation);
    if (answer && *answer == Answer::NotRegistered) continue;
    if (answer && *answer == Answer::Received) platform.clock.sleep(std::chrono::milliseconds(15));
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
  post("postTaskFinished", {{"postFinishedTask"}});
}

void QWTaskNotification::postIncrementProgress() {
  post("postIncrementProgress", {{"incrementRemoteProgress"}});
}

void QWTaskNotification::postDisconnect() {
  post("postDisconnect", {{"postDisconnect"}});
}

}  // namespace vantory
