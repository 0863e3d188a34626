#include "tasks/ui/QWLockOutlineController.h"

#include "backups/QWDataController.h"
#include "backups/ui/CatalogRows.h"
#include "services/MainThread.h"
#include "services/QWAuthorization.h"

namespace vantory {

namespace {

AppList apps() {
  return QWDataController::sharedController().appArray();
}

bool isLockable(const OutlineItemPointer& item) {
  const auto prefItem = rowAs<QWPrefItem>(item);
  return !prefItem || prefItem->lockable();
}

int lockStateOf(const OutlineItemPointer& item) {
  if (const auto app = rowAs<QWApp>(item)) return app->locked();
  const auto prefItem = rowAs<QWPrefItem>(item);
  return prefItem && prefItem->lockable() ? prefItem->locked() : Off;
}

void lock(const OutlineItemPointer& item, int state) {
  if (const auto app = rowAs<QWApp>(item)) {
    app->setLocked(state);
    app->lockFiles(state);
  } else if (const auto prefItem = rowAs<QWPrefItem>(item)) {
    prefItem->setLocked(state);
    prefItem->lockFiles(state);
    // An Avid user's state reaches no further than its item by itself.
    const auto above = applicationOfRow(item);
    if (above && prefItem->parent() != std::static_pointer_cast<CatalogParent>(above)) above->updateLockStatus();
  }
}

}  // namespace

QWLockOutlineController::QWLockOutlineController(OutlineView& outline)
    : outline_(outline),
      tabSwitch_(NotificationCenter::shared().observe("QWVantoryLockTabSwitch", [this] { reload(); })) {}

void QWLockOutlineController::reload() {
  for (const auto& app : apps()) app->updateLockStatus();
  MainThread::shared().runAndWait([this] { outline_.reloadData(); });
}

Rows QWLockOutlineController::rowsUnder(const OutlineItemPointer& item) const {
  return item ? rowsBelow(item) : rowsOf(apps());
}

ObjectValue QWLockOutlineController::objectValueForTableColumn(const std::string& column,
                                                               const OutlineItemPointer& byItem) {
  if (column == "name") return nameOfRow(byItem);
  return lockStateOf(byItem);
}

void QWLockOutlineController::setObjectValue(const ObjectValue& value, const std::string& forTableColumn,
                                             const OutlineItemPointer& byItem) {
  if (forTableColumn == "name" || !isLockable(byItem)) return;
  QWAuthorization::sharedController().beginTask();
  lock(byItem, clickedState(value));
  const auto app = applicationOfRow(byItem);
  outline_.reloadItem(app ? app : byItem, true);
}

void QWLockOutlineController::willDisplayCell(OutlineCell& cell, const std::string& forTableColumn,
                                              const OutlineItemPointer& item) {
  if (forTableColumn != "name") {
    cell.enabled = isLockable(item);
    return;
  }
  if (const auto app = rowAs<QWApp>(item)) cell.icon = app->icon();
}

}  // namespace vantory
