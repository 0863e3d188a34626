// An outline whose rows are lists.
#pragma once

#include "backups/ui/CatalogRows.h"
#include "platform/OutlineView.h"

namespace vantory {

// Answers the outline's questions about rows by what rowsUnder() tells. A row with nothing below it cannot be opened.
class RowsDelegate : public OutlineDelegate {
 public:
  std::size_t numberOfChildrenOfItem(const OutlineItemPointer& item) override;
  OutlineItemPointer child(std::size_t index, const OutlineItemPointer& ofItem) override;
  Rows childrenOfItem(const OutlineItemPointer& item) override { return rowsUnder(item); }
  bool isItemExpandable(const OutlineItemPointer& item) override;

 protected:
  // The rows below an item, in order; below null the outermost ones.
  virtual Rows rowsUnder(const OutlineItemPointer& item) const = 0;
};

}  // namespace vantory
