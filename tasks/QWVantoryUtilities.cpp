// Asks about running applications, and waits for them to quit.
#include "tasks/QWVantoryUtilities.h"

#include <chrono>
#include <optional>

#include "base/Format.h"
#include "platform/Clock.h"
#include "platform/Workspace.h"
#include "services/QWCmdUtils.h"
#include "services/Runtime.h"
#include "services/log/QWLog.h"
#include "services/messages/QWAlert.h"
#include "services/messages/QWTaskNotification.h"
#include "services/threads/MainThread.h"

namespace vantory {

namespace {

constexpr int kAttempts = 16;
constexpr std::chrono::milliseconds kInterval{2000};
constexpr std::chrono::milliseconds kLooksForCancel{100};

Platform& platform() {
  return Runtime::current().platform();
}

// None where it cannot be told.
std::optional<bool> isRunning(const std::string& name, const std::string& bundleID) {
  const Result<bool> running = platform().workspace.isRunning(bundleID);
  if (running) return *running;
  QWLog::appendLog("Unable to tell whether %@ is running: %@", name, running.error().text);
  return std::nullopt;
}

// False as soon as the task is cancelled.
bool waitOneInterval(const std::function<bool()>& isCancelled) {
  for (auto waited = kInterval.zero(); waited < kInterval; waited += kLooksForCancel) {
    if (isCancelled && isCancelled()) return false;
    platform().clock.sleep(kLooksForCancel);
  }
  return true;
}

// What the question says beside its usual text where the window alone cannot close the application.
std::string adviceAbout(const std::string& name, const std::string& bundleID) {
  const Result<bool> canBeAsked = platform().workspace.canBeAskedToQuit(bundleID);
  if (canBeAsked && *canBeAsked) return "";
  return formatted("\n\nVantory cannot ask %@ to quit. Please quit it yourself, then choose Close and Relaunch.", name);
}

// Blocks until the person has decided.
GuardDecision askUser(const std::string& name, const std::string& bundleID, const QWAlert& alert) {
  QWLog::appendLog("%@ is running - asking the user what to do...", name);
  const int answer = alert.ask(
      {.messageText = formatted("%@ is running", name),
       .defaultButton = "Close and Relaunch",
       .alternateButton = "Cancel",
       .otherButton = "Skip Application",
       .informativeText = formatted("This task cannot complete while %@ is running. Do you want to cancel processing, "
                                    "skip all %@ tasks or close and relaunch %@?",
                                    name, name, name) +
                          adviceAbout(name, bundleID)});
  switch (answer) {
    case QWAlert::Default:
      QWLog::appendLog("User chose to close and relaunch app.");
      return GuardDecision::CloseAndRelaunch;
    case QWAlert::Alternate:
      QWLog::appendLog("User chose to cancel.");
      return GuardDecision::Cancel;
    case QWAlert::Other:
      QWLog::appendLog("User chose to skip app.");
      return GuardDecision::Skip;
  }
  QWLog::appendLog("Unexpected value returned from alert box.");
  return GuardDecision::NotRunning;
}

}  // namespace

GuardDecision QWVantoryUtilities::checkRunningAppsForName(const std::string& name, const std::string& bundleID,
                                                          bool closeAutomatically) {
  const std::optional<bool> runs = isRunning(name, bundleID);
  if (!runs) return GuardDecision::NotKnown;
  if (!*runs) return GuardDecision::NotRunning;
  const QWAlert& alert = QWAlert::sharedController();
  if (QWCmdUtils::sharedController().hasGUI() && alert.ask) return askUser(name, bundleID, alert);
  if (!closeAutomatically) {
    QWLog::appendLog("%@ is running - skipping app...", name);
    return GuardDecision::Skip;
  }
  QWLog::appendLog("%@ is running - closing application...", name);
  return GuardDecision::CloseAndRelaunch;
}

bool QWVantoryUtilities::closeAppWithName(const std::string& name, const std::string& bundleID,
                                          const std::function<bool()>& isCancelled) {
  QWLog::appendLog("Closing application %@...", name);
  MainThread::shared().runAndWait([&] { sendQuitEventToApp(name, bundleID); });
  QWLog::appendLog("Waiting for %@ to close...", name);
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    if (!waitOneInterval(isCancelled)) return false;
    if (!isRunning(name, bundleID).value_or(true)) return true;
  }
  return false;
}

void QWVantoryUtilities::sendQuitEventToApp(const std::string& name, const std::string& bundleID) {
  const Status status = platform().workspace.quitApplication(name, bundleID);
  if (status.ok()) return;
  QWLog::appendLog("Unable to quit %@ application  - %@", name, status.error().text);
  QWTaskNotification::postTaskErrorString(formatted("Unable to quit %@ application - %@", name, status.error().text));
}

}  // namespace vantory
