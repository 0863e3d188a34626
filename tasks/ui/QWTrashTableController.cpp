// Ticks whole applications.
#include "tasks/ui/QWTrashTableController.h"

#include <algorithm>

#include "backups/QWDataController.h"
#include "backups/ui/CatalogRows.h"
#include "backups/ui/Controls.h"

namespace vantory {

namespace {

AppList apps() {
  return QWDataController::sharedController().appArray();
}

void setAll(const QWApp& app, State state) {
  for (const auto& item : app.children()) {
    item->setSelected(state);
    for (const auto& user : item->users()) user->setSelected(state);
  }
}

}  // namespace

QWTrashTableController::QWTrashTableController(OutlineView& outline, Button& trashButton)
    : SurveyedRows(outline, &trashButton),
      outline_(outline),
      trashButton_(trashButton),
      appRefresh_(NotificationCenter::shared().observe("QWVantoryAppRefresh", [this] { reload(); })),
      tabSwitch_(NotificationCenter::shared().observe("QWVantoryTrashTabSwitch", [this] { reload(); })) {
  updateHeaderCheckCell();
}

void QWTrashTableController::reload() {
  outline_.reloadData();
  updateHeaderCheckCell();
}

// Without any application the header is off.
void QWTrashTableController::updateHeaderCheckCell() {
  const AppList all = apps();
  const auto count = [&](State state) {
    return static_cast<std::size_t>(
        std::count_if(all.begin(), all.end(), [=](const auto& app) { return app->selected() == state; }));
  };
  headerState_ = Mixed;
  if (count(On) == all.size()) headerState_ = On;
  if (count(Off) == all.size()) headerState_ = Off;
  outline_.setHeaderState(headerState_);
  trashButton_.setEnabled(headerState_ != Off);
  showWhetherThere();
}

// An application shows the users of its first item that has any; whatever else it holds is not listed.
Rows QWTrashTableController::rowsUnder(const OutlineItemPointer& item) const {
  if (!item) return rowsFor(apps());
  const auto app = rowAs<QWApp>(item);
  if (!app) return {};
  for (const auto& prefItem : app->children())
    if (!prefItem->users().empty()) return rowsFor(prefItem->users(), item);
  return {};
}

// Only what would be trashed.
Standing QWTrashTableController::standingIn(const Survey& survey, const OutlineItemPointer& row) const {
  const auto app = rowAs<QWApp>(row);
  return app ? survey.ofPreferences(*app) : SurveyedRows::standingIn(survey, row);
}

bool QWTrashTableController::isTickedThere(const Survey& survey, const QWApp& app) const {
  return app.selected() != Off && survey.ofPreferences(app).files > 0;
}

ObjectValue QWTrashTableController::objectValueForTableColumn(const std::string& column,
                                                              const OutlineItemPointer& byItem) {
  if (const auto value = surveyedValue(column, byItem)) return *value;
  return selectionOfRow(byItem);
}

void QWTrashTableController::setObjectValue(const ObjectValue& value, const std::string&,
                                            const OutlineItemPointer& byItem) {
  const State state = clickedState(value);
  if (const auto app = rowAs<QWApp>(byItem)) {
    app->setSelected(state);
    setAll(*app, state);
  } else if (const auto user = rowAs<QWPrefItem>(byItem)) {
    user->setSelected(state);
    if (const auto above = applicationOfRow(byItem)) {
      above->updateSelectionStatusForPrefs();
      outline_.reloadItem(rowAround<QWApp>(byItem), false);
    }
  }
  outline_.reloadItem(byItem, true);
  updateHeaderCheckCell();
}

void QWTrashTableController::willDisplayCell(OutlineCell& cell, const std::string& column,
                                             const OutlineItemPointer& item) {
  cell.dimmed = hasNothing(item);
  if (column != "selected") return;
  cell.title = nameOfRow(item);
  if (const auto app = rowAs<QWApp>(item)) cell.icon = app->icon();
}

// A mixed header becomes on.
void QWTrashTableController::mouseDownInHeaderOfTableColumn(const std::string&) {
  const State state = headerState_ == On ? Off : On;
  for (const auto& app : apps()) {
    setAll(*app, state);
    app->setSelected(state);
  }
  reload();
}

}  // namespace vantory
