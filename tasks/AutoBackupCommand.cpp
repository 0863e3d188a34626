// "-autobackup": what the schedule calls.

#include "backups/QWBackup.h"
#include "backups/QWDataController.h"
#include "services/FailureTally.h"
#include "tasks/AppController.h"
#include "tasks/Command.h"

namespace vantory {

int autoBackupCommand(const CommandContext& context) {
  context.controller.postGrowlNotification("Vantory", "Backing up preferences...");
  QWDataController::sharedController().populateApps();
  if (QWBackup::autoBackup()->writeData() == WriteResult::SettingsNotWritten) FailureTally::shared().add();
  context.controller.postGrowlNotification("Vantory", "Backup complete");
  return 0;
}

}  // namespace vantory
