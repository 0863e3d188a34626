// Begins a task, and tells its failures to whoever started it.
#include "tasks/AppController.h"

#include <vector>

#include "base/Text.h"
#include "platform/SystemInfo.h"
#include "platform/SystemLog.h"
#include "services/QWCmdUtils.h"
#include "services/Runtime.h"
#include "services/files/QWAuthorization.h"
#include "services/log/QWLog.h"
#include "services/messages/QWGrowl.h"
#include "services/messages/QWTaskNotification.h"
#include "settings/QWBugReporter.h"

namespace vantory {

bool asksForNotifications(std::string_view argument) {
  return argument == "-hotkey" || argument == "-task";
}

// The log comes after the look for crashes, which holds back what it has to say until then.
void AppController::initWithoutGUI() {
  QWBugReporter::startBugReporter();
  QWCmdUtils::sharedController().setHasGUI(false);
  QWLog::createNewLog(kTaskLogName);
  QWAuthorization::sharedController(false);
}

void AppController::initForDryRun() {
  QWCmdUtils::sharedController().setHasGUI(false);
  QWLog::keepSilent();
  QWAuthorization::sharedController(false);
}

// Only where whoever started the task asked for it.
void AppController::postGrowlNotification(const std::string& title, const std::string& description) const {
  const std::vector<std::string>& arguments = Runtime::current().platform().system.arguments();
  if (arguments.empty() || !asksForNotifications(arguments.back())) return;
  QWGrowl::postGrowlNotification(title, description);
}

void AppController::reportFailure(const TaskFailure& failure) const {
  QWTaskNotification::postTaskErrorString(failure.text);
  QWLog::appendLog("%@", failure.log.value_or(failure.text));
  postGrowlNotification(failure.title, failure.description);
  if (failure.console) Runtime::current().platform().systemLog.write(printable(*failure.console));
}

}  // namespace vantory
