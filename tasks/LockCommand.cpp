// "-lock" and "-unlock": protect preference files against changes, and give them back.

#include "backups/QWDataController.h"
#include "base/Format.h"
#include "services/TaskReport.h"
#include "tasks/AppController.h"
#include "tasks/KeyList.h"
#include "tasks/TaskCommand.h"

namespace vantory {

namespace {

// A file that could not be locked is in the report; the task goes on.
int setLocks(const CommandContext& context, State state) {
  const AppController& controller = context.controller;
  controller.postGrowlNotification("Vantory", state == On ? "Locking preferences..." : "Unlocking preferences...");
  QWDataController::sharedController().populateApps();
  const std::string operand = context.operand(1).value_or(std::string(kAllFiles));
  const KeyList keys = splitKeys(operand);
  if (keys.empty())
    return context.refuse({.text = "Vantory: Unable to lock/unlock. Invalid keys.",
                           .title = "Lock/unlock failed",
                           .description = "Invalid keys"});
  const bool areNamed = operand != kAllPrefs && operand != kAllFiles;
  for (const auto& item : itemsForOperand(operand, keys, context.report)) {
    if (areNamed && !item->lockable())
      context.report.unused(
          {.operand = item->key(), .reason = formatted("\"%@\" is an item that cannot be locked.", item->key())});
    item->lockFiles(state, context.report);
  }
  controller.postGrowlNotification("Vantory", state == On ? "Lock complete" : "Unlock complete");
  return 0;
}

}  // namespace

int lockCommand(const CommandContext& context) {
  return setLocks(context, On);
}

int unlockCommand(const CommandContext& context) {
  return setLocks(context, Off);
}

}  // namespace vantory
