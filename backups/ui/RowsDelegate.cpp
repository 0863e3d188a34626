#include "backups/ui/RowsDelegate.h"

namespace vantory {

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
