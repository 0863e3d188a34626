// Shows locks, and changes them on another thread.
#include "tasks/ui/QWLockOutlineController.h"

#include <utility>

#include "backups/QWDataController.h"
#include "backups/ui/CatalogRows.h"
#include "backups/ui/Controls.h"
#include "backups/ui/FailureReport.h"
#include "services/TaskReport.h"
#include "services/files/QWAuthorization.h"
#include "services/receipts/TaskReceipt.h"
#include "services/threads/MainThread.h"

namespace vantory {

namespace {

AppList apps() {
  return QWDataController::sharedController().appArray();
}

// An application always is: items that are not are passed over.
bool isLockable(const OutlineItemPointer& item) {
  const auto prefItem = rowAs<QWPrefItem>(item);
  return !prefItem || prefItem->lockable();
}

// What the window shows: its thread must not look at the files.
State lockStateOf(const OutlineItemPointer& item) {
  if (const auto app = rowAs<QWApp>(item)) return app->lockedWhenLastKnown();
  const auto prefItem = rowAs<QWPrefItem>(item);
  return prefItem && prefItem->lockable() ? prefItem->lockedWhenLastKnown() : Off;
}

// Looks at the files of all states that are due.
void workOutLockStates(const QWApp& app) {
  (void)app.locked();
  for (const auto& item : app.children()) {
    (void)item->locked();
    for (const auto& user : item->users()) (void)user->locked();
  }
}

// Only what the row shows; no file is touched.
void setLockStateOf(const OutlineItemPointer& item, State state) {
  if (const auto app = rowAs<QWApp>(item)) app->setLocked(state);
  if (const auto prefItem = rowAs<QWPrefItem>(item)) prefItem->setLocked(state);
}

void lock(const OutlineItemPointer& item, State state, TaskReport& report) {
  if (const auto app = rowAs<QWApp>(item)) {
    app->lockFiles(state, report);
  } else if (const auto prefItem = rowAs<QWPrefItem>(item)) {
    prefItem->lockFiles(state, report);
    // An Avid user's state reaches no further than its item by itself.
    const auto above = applicationOfRow(item);
    if (above && prefItem->parent() != std::static_pointer_cast<CatalogParent>(above)) above->updateLockStatus();
  }
}

// Files that usually are there and are not make a row mixed however often it is locked.
bool isAllLocked(const OutlineItemPointer& item) {
  const auto app = rowAs<QWApp>(item);
  const auto prefItem = rowAs<QWPrefItem>(item);
  const LockCount count = app ? app->locksOfExistingFiles() : prefItem ? prefItem->locksOfExistingFiles() : LockCount();
  return count.locked > 0 && count.unlocked == 0;
}

// Whether to try again.
bool tellFailure(State state, const TaskReport& report) {
  return reportResult(state == On ? "Not everything could be locked" : "Not everything could be unlocked", "", report);
}

}  // namespace

QWLockOutlineController::QWLockOutlineController(OutlineView& outline, BusyIndicator& spinner)
    : SurveyedRows(outline),
      outline_(outline),
      spinner_(spinner),
      appRefresh_(NotificationCenter::shared().observe("QWVantoryAppRefresh", [this] { reload(); })),
      tabSwitch_(NotificationCenter::shared().observe("QWVantoryLockTabSwitch", [this] { reload(); })) {}

// Main thread. The spinner turns until the work is done, or cannot be begun.
void QWLockOutlineController::runOnThread(std::function<void()> work) {
  spinner_.startAnimation();
  const bool added = work_.add([this, work = std::move(work)] {
    work();
    MainThread::shared().runAndWait([this] { spinner_.stopAnimation(); });
  });
  if (!added) spinner_.stopAnimation();
}

void QWLockOutlineController::reload() {
  if (MainThread::shared().isCurrent()) return runOnThread([this] { reload(); });
  for (const auto& app : apps()) {
    app->updateLockStatus();
    workOutLockStates(*app);
  }
  MainThread::shared().runAndWait([this] { outline_.reloadData(); });
}

Rows QWLockOutlineController::rowsUnder(const OutlineItemPointer& item) const {
  return item ? rowsBelow(item) : rowsFor(apps());
}

ObjectValue QWLockOutlineController::objectValueForTableColumn(const std::string& column,
                                                               const OutlineItemPointer& byItem) {
  if (column == "name") return nameOfRow(byItem);
  if (const auto value = surveyedValue(column, byItem)) return *value;
  return lockStateOf(byItem);
}

void QWLockOutlineController::setObjectValue(const ObjectValue& value, const std::string& forTableColumn,
                                             const OutlineItemPointer& byItem) {
  if (forTableColumn == "name" || isSurveyed(forTableColumn) || !isLockable(byItem)) return;
  const State clicked = clickedState(value);
  const bool wasMixed = lockStateOf(byItem) == Mixed;
  const OutlineItemPointer shown = rowAround<QWApp>(byItem);
  // What was asked for shows at once, what came of it when it is done.
  setLockStateOf(byItem, clicked);
  outline_.reloadItem(shown, true);
  runOnThread([this, byItem, clicked, wasMixed, shown] {
    const State state = clicked == On && wasMixed && isAllLocked(byItem) ? Off : clicked;
    const auto lockOnce = [&] {
      QWAuthorization::sharedController().beginTask();
      TaskReport report;
      TaskReceipt receipt(report, {.name = state == On ? "lock" : "unlock"});
      lock(byItem, state, report);
      receipt.end();
      if (const auto app = applicationOfRow(byItem)) workOutLockStates(*app);
      MainThread::shared().runAndWait([&] { outline_.reloadItem(shown, true); });
      return report.isWhole() || !tellFailure(state, report);
    };
    while (!lockOnce()) {
    }
  });
}

void QWLockOutlineController::willDisplayCell(OutlineCell& cell, const std::string& forTableColumn,
                                              const OutlineItemPointer& item) {
  cell.dimmed = hasNothing(item);
  if (forTableColumn != "name") {
    cell.enabled = isSurveyed(forTableColumn) || isLockable(item);
    return;
  }
  if (const auto app = rowAs<QWApp>(item)) cell.icon = app->icon();
}

}  // namespace vantory
