// "-trash": moves preference files to the Trash.

#include "backups/QWDataController.h"
#include "tasks/AppController.h"
#include "tasks/KeyList.h"
#include "tasks/TaskCommand.h"
#include "tasks/TrashRun.h"

namespace vantory {

namespace {

// A short name counts only as the whole operand.
std::string withoutAlias(const std::string& operand) {
  for (const Alias& alias : aliasTable())
    if (operand == alias.name) return std::string(alias.keys);
  return operand;
}

}  // namespace

int trashCommand(const CommandContext& context) {
  const AppController& controller = context.controller;
  controller.postGrowlNotification("Vantory", "Trashing preferences...");
  QWDataController::sharedController().populateApps();
  const std::string operand = withoutAlias(context.operand(1).value_or(std::string(kAllPrefs)));
  const KeyList keys = splitKeys(operand);
  if (keys.empty())
    return context.refuse(
        {.text = "Vantory: Unable to trash. Invalid keys.", .title = "Trash failed", .description = "Invalid keys"});
  TrashObserver nobody;
  (void)TrashRun(context.report, nobody)
      .run({{.app = nullptr, .items = itemsForOperand(operand, keys, context.report)}});
  controller.postGrowlNotification("Vantory", "Trash complete");
  return 0;
}

}  // namespace vantory
