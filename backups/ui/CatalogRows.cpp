// Turns records of the catalog into rows, and ticks of rows into selections.
#include "backups/ui/CatalogRows.h"

namespace vantory {

Rows rowsBelow(const OutlineItemPointer& item) {
  if (const auto app = rowAs<QWApp>(item)) return rowsFor(app->children(), item);
  if (const auto prefItem = rowAs<QWPrefItem>(item)) return rowsFor(prefItem->users(), item);
  return {};
}

std::shared_ptr<QWApp> applicationOfRow(const OutlineItemPointer& item) {
  return rowAs<QWApp>(rowAround<QWApp>(item));
}

State selectionOfRow(const OutlineItemPointer& item) {
  const auto record = rowAs<CatalogParent>(item);
  return record ? record->selected() : Off;
}

std::string nameOfRow(const OutlineItemPointer& item) {
  if (const auto app = rowAs<QWApp>(item)) return app->name();
  if (const auto prefItem = rowAs<QWPrefItem>(item)) return prefItem->name();
  return {};
}

// What is no state of a check box, such as text, counts as off.
State clickedState(const ObjectValue& value) {
  const State* state = std::get_if<State>(&value);
  return state && *state != Off ? On : Off;
}

// The application's own state follows from its items, unless it is what was ticked.
void selectRow(const OutlineItemPointer& item, State state) {
  if (const auto app = rowAs<QWApp>(item)) {
    app->setSelected(state);
    for (const auto& child : app->children()) child->inheritSelectionFromParent();
    return;
  }
  const auto prefItem = rowAs<QWPrefItem>(item);
  if (!prefItem) return;
  prefItem->setSelected(state);
  for (const auto& user : prefItem->users()) user->inheritSelectionFromParent();
  // The application's own walk reaches the item between it and an Avid user.
  if (const auto app = applicationOfRow(item)) app->updateSelectionStatus();
}

std::size_t RowsDelegate::numberOfChildrenOfItem(const OutlineItemPointer& item) {
  return rowsUnder(item).size();
}

OutlineItemPointer RowsDelegate::child(std::size_t index, const OutlineItemPointer& ofItem) {
  const Rows rows = rowsUnder(ofItem);
  return index < rows.size() ? rows[index] : nullptr;
}

bool RowsDelegate::isItemExpandable(const OutlineItemPointer& item) {
  return !rowsUnder(item).empty();
}

}  // namespace vantory
