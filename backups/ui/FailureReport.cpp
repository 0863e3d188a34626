// How the outcome of a task is put before the person.
#include "backups/ui/FailureReport.h"

#include <utility>

#include "services/TaskReport.h"
#include "services/log/QWLog.h"
#include "services/threads/BackgroundThreads.h"

namespace vantory {

void reportFailure(const std::string& failure, const std::string& reason, AlertParent parentWindow) {
  QWLog::appendLog("%@: %@", failure, reason);
  QWAlert::alertSheetWithMessageText(failure, reason, parentWindow);
}

bool startTask(std::function<void()> work) {
  if (SerialWork::tasks().add(std::move(work))) return true;
  reportFailure("The task could not be begun",
                "The system has no thread to give. Please close other programs, then try again.");
  return false;
}

std::string withCauses(const std::string& text, const TaskReport& report) {
  const std::string causes = report.causes();
  if (text.empty() || causes.empty()) return text + causes;
  return text + "\n\n" + causes;
}

void reportFailedPruning(const TaskReport& report) {
  if (report.hasFailures()) reportFailure("Old automatic backups could not be removed", report.causes());
}

// A restore that put nothing back is none, even where nothing failed.
bool reportIncompleteRestore(const TaskReport& report) {
  const bool any = report.hasDone(FileAction::Restore);
  if (any && report.isWhole()) return false;
  reportFailure(any ? "Not everything could be restored" : "Nothing was restored",
                withCauses(report.isCancelled() ? "The restore was cancelled." : "", report));
  return true;
}

}  // namespace vantory
