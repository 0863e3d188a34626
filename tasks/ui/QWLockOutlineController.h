// The Lock pane: protects preference files against changes.
#pragma once

#include "backups/ui/RowsDelegate.h"
#include "platform/OutlineView.h"
#include "services/NotificationCenter.h"

namespace vantory {

// Main thread, but for reload(). The outline outlives it.
class QWLockOutlineController : public RowsDelegate, public OutlineActions {
 public:
  explicit QWLockOutlineController(OutlineView& outline);

  // Looks at all files again and shows what it found. Any thread.
  void reload();

  // "name", or the state of the lock.
  ObjectValue objectValueForTableColumn(const std::string& column, const OutlineItemPointer& byItem) override;
  void setObjectValue(const ObjectValue& value, const std::string& forTableColumn,
                      const OutlineItemPointer& byItem) override;
  void willDisplayCell(OutlineCell& cell, const std::string& forTableColumn, const OutlineItemPointer& item) override;

 protected:
  Rows rowsUnder(const OutlineItemPointer& item) const override;

 private:
  OutlineView& outline_;
  NotificationCenter::Observation tabSwitch_;
};

}  // namespace vantory
