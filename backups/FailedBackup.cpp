#include "backups/FailedBackup.h"

#include "backups/QWBackup.h"
#include "backups/QWDataController.h"

namespace vantory {

void dropFailedBackup(QWBackup& backup, TaskReport& report) {
  backup.removeCreatedFolder(report);
  QWDataController::sharedController().populateBackups();
}

}  // namespace vantory
