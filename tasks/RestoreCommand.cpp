// "-restore": puts a backup in place.

#include <algorithm>

#include "backups/DefaultBackup.h"
#include "backups/LibraryFolder.h"
#include "backups/QWBackup.h"
#include "backups/QWDataController.h"
#include "base/Format.h"
#include "base/Paths.h"
#include "base/Text.h"
#include "services/Runtime.h"
#include "services/TaskReport.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"
#include "tasks/AppController.h"
#include "tasks/KeyList.h"
#include "tasks/NamedBackup.h"
#include "tasks/TaskCommand.h"
#include "tasks/TypedCommand.h"

namespace vantory {

namespace {

// An item that is not listed is left out with all its users; the others stay as they were saved.
void deselectAllBut(const KeyList& keys, const QWBackup& backup) {
  for (const auto& app : backup.children()) {
    for (const auto& item : app->children()) {
      if (std::find(keys.begin(), keys.end(), item->key()) != keys.end()) continue;
      item->setSelected(Off);
      for (const auto& user : item->users()) user->setSelected(Off);
    }
    app->updateSelectionStatus();
  }
}

// Whether it says that it is a path from here or from the root, and nothing of a library.
bool isPlainlyAPath(const std::string& operand) {
  return operand.starts_with('/') || operand.starts_with("./") || operand.starts_with("../");
}

// A path is wanted, but a name that the library knows is what people type.
void remarkOnMissing(const std::string& operand, const std::string& path, TaskReport& report) {
  QWDataController& data = QWDataController::sharedController();
  data.populateApps();
  data.populateBackups();
  const bool isName = operand.find('/') == std::string::npos;
  const BackupList meant = isName ? backupsMeant(operand, operand) : BackupList();
  for (const auto& backup : meant) {
    const std::string& found = backup->path();
    const auto command = standsInQuotes(found) ? commandInThisHome("vantory -restore \"" + found + "\"") : std::nullopt;
    report.remark(formatted("\"%@\" is in the library. To restore it", operand) +
                  (command ? ": " + *command : " the path of its folder is needed: " + found));
  }
  if (!isPlainlyAPath(operand) && Runtime::current().isHomeNamed)
    report.remark("Where a home is named, a backup is looked for in its library only: \"./NAME\" is a path.");
  if (meant.empty())
    report.remark(isName ? faultOfName(operand, {})
                         : (path.empty() ? operand : path) +
                               " is not there. \"vantory --list-backups\" lists what the library has.");
}

// Whoever names homes knows no path in each one's library: there a backup may be called by its name, or by its path
// from the library on, which nothing in the working directory takes. Empty for what is no single backup's.
std::string pathMeant(const CommandContext& context) {
  const std::string path = context.pathOperand(1);
  const std::string operand = *context.operand(1);
  const bool isPath = isPlainlyAPath(operand);
  if (!Runtime::current().isHomeNamed || (isPath && QWFileManager::fileExistsAtPath(path))) return path;
  QWDataController& data = QWDataController::sharedController();
  data.populateApps();
  data.populateBackups();
  const BackupList meant = backupsMeant(operand, paths::absolute(operand, libraryFolder().value_or("/")));
  if (meant.size() == 1) return meant.front()->path();
  return isPath ? path : "";
}

}  // namespace

int restoreCommand(const CommandContext& context) {
  const AppController& controller = context.controller;
  controller.postGrowlNotification("Vantory", "Restoring preferences...");
  if (context.operandCount() == 0) return context.refuseWithoutOperand();
  const std::string path = pathMeant(context);
  if (!QWFileManager::fileExistsAtPath(path)) {
    remarkOnMissing(*context.operand(1), path, context.report);
    return context.refuse({.text = "Vantory: Unable to restore backup - backup does not exist.",
                           .log = "Unable to restore backup - backup does not exist",
                           .title = "Restore failed",
                           .description = "Backup does not exist",
                           .console = "Unable to restore backup - backup does not exist"});
  }
  std::optional<KeyList> keys;
  if (const auto operand = context.operand(2)) keys = splitKeys(*operand);
  if (keys && keys->empty())
    return context.refuse({.text = "Vantory: Unable to restore - invalid keys.",
                           .title = "Restore failed",
                           .description = "Invalid keys",
                           .console = "Invalid keys"});
  QWDataController::sharedController().populateApps();
  const auto backup = QWBackup::backupWithFile(path);
  if (keys) {
    deselectAllBut(*keys, *backup);
    noteUnknownKeys(*keys, *backup, context.report);
  }
  backup->restore(context.report);
  controller.postGrowlNotification("Vantory", "Restore complete");
  return 0;
}

// The library is listed first: only a listed backup can be the default.
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
    context.report.refuse("No default backup set.");
    remarkOnNamedDefault(context.report);
    return 1;
  }
  backup->restore(context.report);
  controller.postGrowlNotification("Default backup restored", backup->name());
  return 0;
}

}  // namespace vantory
