// Reads receipts, and takes tasks back, beside the main thread.
#include "tasks/ui/UndoController.h"

#include <algorithm>
#include <utility>

#include "backups/BackupNaming.h"
#include "backups/QWDataController.h"
#include "backups/ui/Controls.h"
#include "backups/ui/FailureReport.h"
#include "platform/FileSystem.h"
#include "services/TaskReport.h"
#include "services/files/QWAuthorization.h"
#include "services/log/QWLog.h"
#include "services/messages/QWAlert.h"
#include "services/messages/QWProgressController.h"
#include "services/receipts/Receipt.h"
#include "services/receipts/ReceiptFolder.h"
#include "services/receipts/TaskReceipt.h"
#include "services/threads/BackgroundThreads.h"
#include "services/threads/MainThread.h"
#include "tasks/ReceiptTitle.h"
#include "tasks/UndoTask.h"

namespace vantory {

namespace {

// From the Trash, or to its earlier name; empty for none.
std::string backupThatCameBack(const TaskReport& report) {
  std::string backup;
  for (const FileReport& file : report.files())
    if (file.outcome == FileReport::Outcome::Done && isBackupName(file.place) &&
        (file.action == FileAction::PutBack || file.action == FileAction::Move))
      backup = file.place;
  return backup;
}

}  // namespace

UndoController::UndoController(const Parts& parts)
    : parts_(parts), refresh_(NotificationCenter::shared().observe(kReceiptsRefresh, [this] { reload(); })) {}

// After the tasks that were there first: the catalog is known then, and what they did is in their receipts.
void UndoController::reload() {
  SerialWork::tasks().add([this] { readReceipts(); });
}

// Every task leaves a receipt, whoever did it, so that their names tell whether there is anything to read.
void UndoController::followOthers() {
  const auto look = [this, known = known_, isOneRunning = isOneRunning_] {
    const auto names = receiptNames();
    if (!names || (*names == known && !isOneRunning)) return;
    SerialWork::tasks().add([this] { readEverything(); });
  };
  BackgroundThreads::shared().start(look, BackgroundThreads::Kind::Look);
}

void UndoController::readEverything() {
  readReceipts();
  QWDataController::sharedController().populateBackups();
  NotificationCenter::shared().postOnMainThread("QWVantoryAppRefresh");
}

void UndoController::readReceipts() {
  const auto names = receiptNames();
  const auto receipts = receiptsDownToNewestToUndo();
  const Receipt* newest = receipts ? newestToUndo(*receipts) : nullptr;
  const std::string title = newest ? titleOf(*newest, *receipts) : "";
  MainThread::shared().runAndWait([&] {
    if (names) known_ = *names;
    isOneRunning_ = receipts && std::ranges::any_of(*receipts, &Receipt::isRunning);
    newest_ = newest ? newest->name : "";
    parts_.command.setTitle(newest ? "Undo " + title : "Undo");
    parts_.command.setEnabled(newest != nullptr);
    if (onReload) onReload();
  });
}

void UndoController::list(std::function<void(const std::vector<UndoRow>& rows)> show) {
  const auto read = [show = std::move(show)] {
    const auto receipts = allReceipts();
    if (!receipts) return reportFailure("What was done lately cannot be listed", receipts.error().text);
    std::vector<UndoRow> rows;
    for (const Receipt& receipt : *receipts)
      if (!didNothing(receipt))
        rows.push_back({.receipt = receipt.name,
                        .date = localTimeText(receipt.begun, "%F %T"),
                        .title = titleOf(receipt, *receipts),
                        .state = stateOf(receipt),
                        .canBeUndone = canBeTakenBack(receipt)});
    MainThread::shared().runAndWait([&] { show(rows); });
  };
  BackgroundThreads::shared().start(read, BackgroundThreads::Kind::Look);
}

void UndoController::undo() {
  if (!newest_.empty()) undo(newest_);
}

void UndoController::undo(const std::string& receipt) {
  // Until its turn comes and it is done there is nothing else to take back.
  parts_.command.setEnabled(false);
  const auto work = [this, receipt] {
    while (takeBack(receipt)) {
    }
  };
  if (!startTask(work)) reload();
}

// Whether the person wants what stayed tried again.
bool UndoController::takeBack(const std::string& name) {
  QWAuthorization::sharedController().beginTask();
  auto undo = chooseUndo(name);
  if (!undo) {
    readEverything();
    reportFailure("This task cannot be taken back now", undo.error().text);
    return false;
  }
  const std::string title = titleOf(*undo->receipt, undo->receipts);
  QWLog::appendLog("Taking %@ back", title);
  MainThread& mainThread = MainThread::shared();
  mainThread.runAndWait([&] {
    parts_.progress.setIndeterminate();
    parts_.progress.updateLabel("Taking back: " + title);
    parts_.progress.show();
    parts_.progress.disableCancel();
  });
  TaskReport report;
  TaskReceipt own(report, {.name = "undo"});
  undo->run(report, &own);
  undo->hold.reset();
  mainThread.runAndWait([&] {
    parts_.progress.hide();
    NotificationCenter::shared().post("QWVantoryAppRefresh");
  });
  const std::string backup = backupThatCameBack(report);
  if (!backup.empty() && parts_.selectBackup) parts_.selectBackup(backup);
  if (!report.isWhole()) return reportResult("Not taken back as a whole: " + title, "", report);
  QWAlert::alertSheetWithMessageText("Taken back: " + title, report.causes());
  return false;
}

}  // namespace vantory
