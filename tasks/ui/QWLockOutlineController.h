// The Lock pane: protects preference files against changes.
#pragma once

#include "platform/OutlineView.h"
#include "services/NotificationCenter.h"

namespace vantory {

// Main thread, but for reload(). The outline outlives it.
class QWLockOutlineController : public OutlineDelegate, public OutlineActions {
 public:
  explicit QWLockOutlineController(OutlineView& outline);

  // Looks at all files again and shows what it found. Any thread.
  void reload();

  std::size_t numberOfChildrenOfItem(const OutlineItemPointer& item) override;
  OutlineItemPointer child(std::size_t index, const OutlineItemPointer& ofItem) override;
  bool isItemExpandable(const OutlineItemPointer& item) override;
  // "name", or the state of the lock.
  ObjectValue objectValueForTableColumn(const std::string& column, const OutlineItemPointer& byItem) override;
  void setObjectValue(const ObjectValue& value, const std::string& forTableColumn,
                      const OutlineItemPointer& byItem) override;
  void willDisplayCell(OutlineCell& cell, const std::string& forTableColumn, const OutlineItemPointer& item) override;

 private:
  OutlineView& outline_;
  NotificationCenter::Observation tabSwitch_;
};

}  // namespace vantory
