// A tree of rows with columns, as a pane's controller sees it. Everything here belongs to the main thread.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "catalog/States.h"
#include "platform/Clock.h"

namespace vantory {

// What a row stands for. Null stands for the root.
class OutlineItem {
 public:
  virtual ~OutlineItem() = default;
  // Tells the row from all others of its outline. Items that were made at different times for one thing have the same.
  virtual std::string identity() const = 0;
};
using OutlineItemPointer = std::shared_ptr<OutlineItem>;

// What a cell holds: nothing, the state of a check box, text, or a date, which the view shows as the person's language
// does in short.
using ObjectValue = std::variant<std::monostate, State, std::string, Timestamp>;

// How a cell is shown.
struct OutlineCell {
  std::string title;   // beside a check box
  std::string remark;  // behind the text, and no part of it
  std::string icon;    // the name of an image of the program's own; empty for none
  bool enabled = true;
  bool dimmed = false;      // of something that is not there; it can be used all the same
  bool editable = false;    // whether its text may be changed in place
  bool emphasized = false;  // stands out among its neighbours
};

// A key that reaches a row.
enum class OutlineKey { Delete, Other };

// Tells the view its rows, and is told what the person did with them.
class OutlineDelegate {
 public:
  virtual ~OutlineDelegate() = default;

  virtual std::size_t numberOfChildrenOfItem(const OutlineItemPointer& item) = 0;
  virtual OutlineItemPointer child(std::size_t index, const OutlineItemPointer& ofItem) = 0;
  // All of them, in order; to be overridden where a list is at hand.
  virtual std::vector<OutlineItemPointer> childrenOfItem(const OutlineItemPointer& item) {
    std::vector<OutlineItemPointer> children(numberOfChildrenOfItem(item));
    for (std::size_t i = 0; i < children.size(); ++i) children[i] = child(i, item);
    return children;
  }
  virtual bool isItemExpandable(const OutlineItemPointer& item) = 0;
  virtual ObjectValue objectValueForTableColumn(const std::string& column, const OutlineItemPointer& byItem) = 0;
  virtual void setObjectValue(const ObjectValue& value, const std::string& forTableColumn,
                              const OutlineItemPointer& byItem) = 0;
  virtual void willDisplayCell(OutlineCell& cell, const std::string& forTableColumn,
                               const OutlineItemPointer& item) = 0;
};

// Beyond the rows: what only some panes want to know.
class OutlineActions {
 public:
  virtual ~OutlineActions() = default;
  virtual void mouseDownInHeaderOfTableColumn(const std::string&) {}
  virtual void didClickTableColumn(const std::string&) {}
  virtual void selectionDidChange() {}
  virtual void doubleClick() {}
  // Whether the key was dealt with.
  virtual bool keyUp(OutlineKey) { return false; }
};

enum class SortIndicator { None, Ascending, Descending };

class OutlineView {
 public:
  virtual ~OutlineView() = default;

  // Asks the delegate for everything anew. Rows that were open or selected, and still exist, stay so.
  virtual void reloadData() = 0;
  virtual void reloadItem(const OutlineItemPointer& item, bool reloadChildren) = 0;
  // The check box in the header of the first column.
  virtual void setHeaderState(State state) = 0;
  virtual void setSortIndicator(const std::string& column, SortIndicator indicator) = 0;
  // A sentence above the rows; empty for none.
  virtual void setRemark(const std::string& text) = 0;
  // The first selected row's item; null when none is.
  virtual OutlineItemPointer selectedItem() const = 0;
  // Selects the item's row alone, opening the rows above it; null selects nothing.
  virtual void selectItem(const OutlineItemPointer& item) = 0;
};

}  // namespace vantory
