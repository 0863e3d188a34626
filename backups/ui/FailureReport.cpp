#include "backups/ui/FailureReport.h"

#include "services/QWLog.h"

namespace vantory {

void reportFailure(const std::string& failure, const std::string& reason, AlertParent parentWindow) {
  QWLog::appendLog("%@: %@", failure, reason);
  QWAlert::alertSheetWithMessageText(failure, reason, parentWindow);
}

}  // namespace vantory
