#include "backups/ui/FailureReport.h"

#include "services/FailureTally.h"
#include "services/log/QWLog.h"

namespace vantory {

void reportFailure(const std::string& failure, const std::string& reason, AlertParent parentWindow) {
  QWLog::appendLog("%@: %@", failure, reason);
  QWAlert::alertSheetWithMessageText(failure, reason, parentWindow);
}

void reportIncompleteRestore(std::size_t failuresBefore) {
  if (FailureTally::shared().count() > failuresBefore)
    reportFailure("Not everything could be restored", "The log names the files that could not be put back.");
}

}  // namespace vantory
