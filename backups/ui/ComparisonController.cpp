// Compares and restores on other threads, and answers the outline's questions.
#include "backups/ui/ComparisonController.h"

#include "backups/QWDataController.h"
#include "backups/ui/BackupNames.h"
#include "backups/ui/ComparisonView.h"
#include "backups/ui/Controls.h"
#include "base/Format.h"
#include "services/TaskReport.h"
#include "services/files/QWAuthorization.h"
#include "services/log/QWLog.h"
#include "services/messages/QWAlert.h"
#include "services/receipts/TaskReceipt.h"
#include "services/threads/BackgroundThreads.h"
#include "services/threads/MainThread.h"

namespace vantory {

namespace {

constexpr std::size_t kFilesBetweenSigns = 500;

std::string statusOf(const Comparison& comparison) {
  std::size_t differing = 0;
  for (const ItemComparison& item : comparison.items) differing += item.files.size();
  const std::size_t same = comparison.count(Difference::Same);
  const std::string sameInWords = formatted("%i %@ the same.", same, same == 1 ? "file is" : "files are");
  if (differing == 0) return "A restore would change nothing: " + sameInWords;
  return formatted("%i %@ not the same, %@ Tick what you want back.", differing,
                   differing == 1 ? "file is" : "files are", sameInWords);
}

ComparisonRow* rowOf(const OutlineItemPointer& item) {
  return dynamic_cast<ComparisonRow*>(item.get());
}

bool askToRestore(const QWBackup& backup) {
  return QWAlert::alertSheetWithMessageText(
             {.messageText = "Restore what you ticked?",
              .defaultButton = "Restore",
              .alternateButton = "Cancel",
              .informativeText = nameAndDate(backup) + ". What is replaced goes to the Trash.",
              .parentWindow = AlertParent::ComparisonWindow}) == QWAlert::Default;
}

}  // namespace

void ComparisonController::compare(const std::shared_ptr<QWBackup>& backup) {
  if (!backup) return;
  close();
  const Ended ended = ended_ = std::make_shared<std::atomic<bool>>(false);
  backup_ = backup;
  view_.show(formatted("Compare \"%@\"", backup->name()));
  showRows(nullptr);
  if (!backup->isComplete()) return view_.setStatus(backup->flawInWords() + ". There is nothing to compare.", false);
  view_.setStatus("Comparing…", true);
  QWLog::appendLog("Comparing backup %@", backup->name());
  const auto work = [this, backup, ended] {
    const auto goOn = [&](std::size_t files) {
      if (files % kFilesBetweenSigns == 0)
        MainThread::shared().runAndWait([&] {
          if (!*ended) view_.setStatus(formatted("Comparing… %i files", files), true);
        });
      return !*ended;
    };
    auto comparison = std::make_shared<const Comparison>(compareBackups({.after = backup, .observer = goOn}));
    MainThread::shared().runAndWait([&] {
      if (!*ended) showRows(std::move(comparison));
    });
  };
  if (!BackgroundThreads::shared().start(work, BackgroundThreads::Kind::Look))
    view_.setStatus("The system has no thread to compare on.", false);
}

void ComparisonController::close() {
  *ended_ = true;
}

// Null for none, while they are being found.
void ComparisonController::showRows(std::shared_ptr<const Comparison> comparison) {
  applications_ = comparison ? comparisonRows(*comparison) : ComparisonRows();
  comparison_ = std::move(comparison);
  view_.rows().reloadData();
  view_.restoreCommand().setEnabled(false);
  if (!comparison_) return;
  view_.openRows();
  view_.setStatus(statusOf(*comparison_), false);
}

void ComparisonController::restoreTicked() {
  const std::vector<ItemChoice> choices = tickedChoices(applications_);
  if (choices.empty() || !askToRestore(*backup_)) return;
  view_.restoreCommand().setEnabled(false);
  view_.setStatus("Restoring…", true);
  startTask([this, backup = backup_, choices] { restoreOnThread(backup, choices); });
}

// As a restore of the whole backup does it: the automatic backup first.
bool ComparisonController::restoreOnce(const std::shared_ptr<QWBackup>& backup, const std::vector<ItemChoice>& choices,
                                       bool& isBackedUp) {
  QWAuthorization::sharedController().beginTask();
  QWLog::appendLog("Restoring parts of backup %@", backup->name());
  TaskReport report;
  if (!isBackedUp) isBackedUp = QWBackup::writeAutoBackup(report) == WriteResult::Success;
  TaskReceipt receipt(report, {.name = "restore", .operands = {backup->path()}});
  restorePartly(backup, choices, report);
  receipt.end();
  if (const auto again = reportIncompleteRestore(report, Retry::Offered)) return *again;
  QWAlert::alertSheetWithMessageText("Preferences successfully restored",
                                     withCauses("You may now relaunch your applications.", report),
                                     AlertParent::ComparisonWindow);
  return false;
}

void ComparisonController::restoreOnThread(const std::shared_ptr<QWBackup>& backup,
                                           const std::vector<ItemChoice>& choices) {
  bool isBackedUp = false;
  while (restoreOnce(backup, choices, isBackedUp)) {
  }
  reportFailedPruning(QWDataController::sharedController().manageAutoBackups());
  MainThread::shared().runAndWait([&] {
    if (!*ended_) compare(backup);
  });
}

const ComparisonRows& ComparisonController::rowsUnder(const OutlineItemPointer& item) const {
  const ComparisonRow* row = rowOf(item);
  return row ? row->below : applications_;
}

OutlineItemPointer ComparisonController::child(std::size_t index, const OutlineItemPointer& ofItem) {
  const ComparisonRows& rows = rowsUnder(ofItem);
  return index < rows.size() ? rows[index] : nullptr;
}

ObjectValue ComparisonController::objectValueForTableColumn(const std::string& column,
                                                            const OutlineItemPointer& byItem) {
  const ComparisonRow& row = *rowOf(byItem);
  if (column == "now") return row.now;
  if (column == "backup") return row.inBackup;
  if (row.canBeTicked) return row.state;
  return row.title;
}

void ComparisonController::setObjectValue(const ObjectValue& value, const std::string& forTableColumn,
                                          const OutlineItemPointer& byItem) {
  ComparisonRow& row = *rowOf(byItem);
  if (forTableColumn != "name" || !row.canBeTicked) return;
  tickRow(row, clickedState(value));
  view_.rows().reloadData();
  view_.restoreCommand().setEnabled(!tickedChoices(applications_).empty());
}

void ComparisonController::willDisplayCell(OutlineCell& cell, const std::string& forTableColumn,
                                           const OutlineItemPointer& item) {
  const ComparisonRow& row = *rowOf(item);
  if (forTableColumn != "name") return;
  cell.title = row.title;
  cell.remark = row.remark;
  cell.emphasized = !row.item && !row.file && !row.key && row.above.expired();
}

}  // namespace vantory
