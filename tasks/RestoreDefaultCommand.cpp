// "-restoredefault": puts the default backup in place.

#include "backups/QWDataController.h"
#include "services/log/QWLog.h"
#include "tasks/AppController.h"
#include "tasks/Command.h"

namespace vantory {

int restoreDefaultCommand(const CommandContext& context) {
  const AppController& controller = context.controller;
  controller.postGrowlNotification("Vantory", "Restoring default backup...");
  QWDataController& data = QWDataController::sharedController();
  data.populateApps();
  data.populateBackups();
  const auto backup = data.defaultBackup();
  if (!backup) {
    QWLog::appendLogAndPrint("Unable to restore backup - no default backup set.");
    controller.postGrowlNotification("Unable to restore backup", "No default backup set.");
    return 1;
  }
  backup->restore();
  controller.postGrowlNotification("Default backup restored", backup->name());
  return 0;
}

}  // namespace vantory
