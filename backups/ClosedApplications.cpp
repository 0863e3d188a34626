// How a task gets running applications out of its way.
#include "backups/ClosedApplications.h"

#include <chrono>

#include "base/Format.h"
#include "catalog/QWApp.h"
#include "platform/Clock.h"
#include "platform/Workspace.h"
#include "services/RunningApplicationGuard.h"
#include "services/Runtime.h"
#include "services/TaskReport.h"
#include "services/log/QWLog.h"

namespace vantory {

namespace {

void say(const char* words) {
  if (words) QWLog::appendLog(words);
}

// One that cannot be looked for is not known to run.
bool isRunning(const std::string& identifier) {
  const auto running = Runtime::current().platform().workspace.isRunning(identifier);
  return running && *running;
}

// Else only the person can quit it.
bool canBeAskedToQuit(const std::string& identifier) {
  const auto canBe = Runtime::current().platform().workspace.canBeAskedToQuit(identifier);
  return canBe && *canBe;
}

}  // namespace

// One application may run under several identifiers: who has closed it by one is not asked again, but where that one
// has to be quit by hand.
ClosedApplications::Answer ClosedApplications::makeWay(const QWApp& app, bool closeAutomatically) {
  bool closed = false;
  for (const std::string& identifier : app.identifiers()) {
    if (closed && !isRunning(identifier)) continue;
    const std::size_t before = closed_.size();
    const Answer answer = closed && canBeAskedToQuit(identifier) ? close(app.name(), identifier)
                                                                 : makeWay(app.name(), identifier, closeAutomatically);
    if (answer != Answer::Proceed) return answer;
    closed |= closed_.size() > before;
  }
  if (!closed && !unknown_.contains(app.name())) say(words_.notRunning);
  return Answer::Proceed;
}

ClosedApplications::Answer ClosedApplications::makeWay(const std::string& name, const std::string& identifier,
                                                       bool closeAutomatically) {
  RunningApplicationGuard* guard = Runtime::current().guard;
  const GuardDecision decision =
      guard ? guard->checkRunningAppsForName(name, identifier, closeAutomatically) : GuardDecision::NotRunning;
  switch (decision) {
    case GuardDecision::Cancel:
      report_.cancelled();
      return Answer::Cancel;
    case GuardDecision::Skip:
      say(words_.skipped);
      report_.passedOver(name, formatted("%@ is running and was skipped. Quit it, then try again.", name));
      return Answer::PassOver;
    case GuardDecision::CloseAndRelaunch:
      return close(name, identifier);
    case GuardDecision::NotKnown:
      if (unknown_.insert(name).second)
        report_.remark(formatted(
            "It could not be told whether %@ is running. If it is, quit it and try again: when it quits, it may write "
            "its own settings over these.",
            name));
      break;
    case GuardDecision::NotRunning:
      break;
  }
  return Answer::Proceed;
}

ClosedApplications::Answer ClosedApplications::close(const std::string& name, const std::string& identifier) {
  say(words_.toClose);
  if (waitingFor_) waitingFor_(name);
  const bool isClosed = Runtime::current().guard->closeAppWithName(name, identifier, isCancelled_);
  if (waitingFor_) waitingFor_("");
  if (isClosed) say(words_.closed);
  if (isCancelled_ && isCancelled_()) {
    report_.cancelled();
    return Answer::Cancel;
  }
  if (!isClosed) {
    say(words_.notClosed);
    report_.passedOver(name,
                       formatted("%@ could not be closed and was skipped. Quit it yourself, then try again.", name));
    return Answer::PassOver;
  }
  closed_.push_back({name, identifier});
  return Answer::Proceed;
}

void ClosedApplications::relaunch(const std::function<void()>& begin) {
  if (closed_.empty()) return;
  Platform& platform = Runtime::current().platform();
  platform.clock.sleep(std::chrono::seconds(1));
  if (begin) begin();
  for (const Closed& app : closed_) {
    const Status started = platform.workspace.launchApplication(app.bundleID);
    if (started) continue;
    QWLog::appendLog("Couldn't relaunch %@", app.bundleID);
    report_.remark(formatted("%@ could not be started again. %@", app.name, started.error().text));
  }
}

}  // namespace vantory
