// Clears away a backup that could not be written.
#include "backups/FailedBackup.h"

#include "backups/BackupLibrary.h"
#include "backups/QWBackup.h"

namespace vantory {

void dropFailedBackup(QWBackup& backup, TaskReport& report) {
  backup.removeCreatedFolder(report);
  BackupLibrary::current().populateBackups();
}

}  // namespace vantory
