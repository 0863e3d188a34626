// The Trash pane: whose preferences go to the Trash.
#pragma once

#include "platform/OutlineView.h"
#include "services/NotificationCenter.h"

namespace vantory {

class Button;

// Main thread. What it is given outlives it.
class QWTrashTableController : public OutlineDelegate, public OutlineActions {
 public:
  QWTrashTableController(OutlineView& outline, Button& trashButton);

  void reload();
  void updateHeaderCheckCell();

  std::size_t numberOfChildrenOfItem(const OutlineItemPointer& item) override;
  OutlineItemPointer child(std::size_t index, const OutlineItemPointer& ofItem) override;
  bool isItemExpandable(const OutlineItemPointer& item) override;
  ObjectValue objectValueForTableColumn(const std::string& column, const OutlineItemPointer& byItem) override;
  void setObjectValue(const ObjectValue& value, const std::string& forTableColumn,
                      const OutlineItemPointer& byItem) override;
  void willDisplayCell(OutlineCell& cell, const std::string& forTableColumn, const OutlineItemPointer& item) override;
  void mouseDownInHeaderOfTableColumn(const std::string& column) override;

 private:
  OutlineView& outline_;
  Button& trashButton_;
  int headerState_ = 1;
  NotificationCenter::Observation appRefresh_;
  NotificationCenter::Observation tabSwitch_;
};

}  // namespace vantory
