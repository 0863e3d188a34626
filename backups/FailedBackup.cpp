#include "backups/FailedBackup.h"

#include "backups/QWBackup.h"
#include "backups/QWDataController.h"

namespace vantory {

void dropFailedBackup(QWBackup& backup) {
  backup.removeCreatedFolder();
  QWDataController::sharedController().populateBackups();
}

}  // namespace vantory
