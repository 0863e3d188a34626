// "-backup": writes a backup of that name into the library.

#include <algorithm>

#include "backups/BackupNaming.h"
#include "backups/QWBackup.h"
#include "backups/QWDataController.h"
#include "platform/JobControl.h"
#include "services/Runtime.h"
#include "services/TaskReport.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"
#include "tasks/AppController.h"
#include "tasks/KeyList.h"
#include "tasks/TaskAccount.h"
#include "tasks/TaskCommand.h"

namespace vantory {

namespace {

// A third argument is the key list, and the second is then passed over; callers rely on these positions.
std::optional<std::string> keyOperand(const CommandContext& context) {
  return context.operand(context.operandCount() == 2 ? 2 : 3);
}

// Of the items in the list; without a list, of all of them.
std::shared_ptr<QWBackup> makeRecord(const std::string& name, const std::optional<KeyList>& keys) {
  QWDataController& data = QWDataController::sharedController();
  data.populateApps();
  auto backup = QWBackup::backupWithName(name);
  const auto copied = [&](const QWPrefItem& item) {
    return keys && std::ranges::find(*keys, item.key()) == keys->end() ? nullptr : item.copy();
  };
  for (const auto& app : data.appArray()) {
    const auto copy = app->copyWithItems(copied);
    if (!copy->children().empty()) backup->addApp(copy);
  }
  return backup;
}

// Each result has words that scripts look for.
void write(QWBackup& backup, const AppController& controller, TaskReport& report) {
  switch (backup.writeData(report)) {
    case WriteResult::NoFiles:
      controller.reportFailure({.text = "Vantory: Backup not created - no files to copy.",
                                .title = "Backup not created",
                                .description = "No files to backup",
                                .console = "Backup not created - no files to copy"});
      report.summarize("");
      backup.removeCreatedFolder(report);
      break;
    case WriteResult::SettingsNotWritten:
      controller.reportFailure({.text = "Vantory: Error writing backup file.",
                                .title = "Backup failed",
                                .description = "Error writing backup file",
                                .console = "Error writing backup file"});
      backup.removeCreatedFolder(report);
      break;
    case WriteResult::Success:
      controller.postGrowlNotification("Vantory", "Backup complete");
      break;
  }
}

// Otherwise the scheduler tries again before long.
void tellSchedule() {
  const Status told = Runtime::current().platform().jobs.runSucceeded();
  if (!told) QWLog::appendLog("Unable to note the date of the scheduled run: %@", told.error().text);
}

}  // namespace

int backupCommand(const CommandContext& context) {
  const AppController& controller = context.controller;
  controller.postGrowlNotification("Vantory", "Creating backup...");
  if (context.operandCount() == 0) return context.refuseWithoutOperand();
  const std::string name = QWFileManager::validateFilename(*context.operand(1));
  if (isOfDotsOnly(name))
    return context.refuse({.text = "Vantory: Unable to backup - invalid filename.",
                           .title = "Backup failed",
                           .description = "Invalid filename",
                           .console = "Invalid filename"});
  noteKeptName(*context.operand(1), name, context.report);
  std::optional<KeyList> keys;
  if (const auto operand = keyOperand(context)) keys = splitKeys(*operand);
  if (keys && keys->empty())
    return context.refuse({.text = "Vantory: Unable to backup - invalid keys.",
                           .title = "Backup failed",
                           .description = "Invalid keys",
                           .console = "Invalid keys"});
  if (isAutomaticName(name))
    QWLog::appendLogAndPrint("%@ is kept among the automatic backups, which are removed in time.", name);
  // Writing it moves a backup that has the name to the Trash, unless another process is at work on that.
  const auto backup = makeRecord(name, keys);
  if (keys) noteUnknownKeys(*keys, *backup, context.report);
  write(*backup, controller, context.report);
  return 0;  // also where there was nothing to back up
}

// What it made stays, also where it is incomplete, and nothing is pruned.
int autoBackupCommand(const CommandContext& context) {
  context.controller.postGrowlNotification("Vantory", "Backing up preferences...");
  QWDataController::sharedController().populateApps();
  const WriteResult result = QWBackup::autoBackup()->writeData(context.report);
  // A run that left out single files is not tried again: it would fail on them every time.
  const bool hadNothingToDo = result == WriteResult::NoFiles && !context.report.hasFailures();
  if (result == WriteResult::Success || hadNothingToDo) tellSchedule();
  context.controller.postGrowlNotification("Vantory", "Backup complete");
  return 0;
}

}  // namespace vantory
