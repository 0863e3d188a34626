// Applications, their items and Avid users as rows of an outline.
#pragma once

#include <memory>
#include <string>

#include "backups/ui/RecordRow.h"
#include "catalog/Catalog.h"

namespace vantory {

// The items of an application, the Avid users of an item; nothing below other rows.
Rows rowsBelow(const OutlineItemPointer& item);

// The application that the row stands for or lies in; null for other rows.
std::shared_ptr<QWApp> applicationOfRow(const OutlineItemPointer& item);
State selectionOfRow(const OutlineItemPointer& item);
std::string nameOfRow(const OutlineItemPointer& item);

// What a click makes of a check box: a mixed one becomes on.
State clickedState(const ObjectValue& value);
// Ticks or unticks an application, an item or an Avid user, with all below it, and brings the rows above up to date.
void selectRow(const OutlineItemPointer& item, State state);

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
