// The Lock pane: protects preference files against changes.
#pragma once

#include <functional>

#include "backups/ui/OutlineView.h"
#include "backups/ui/SurveyedRows.h"
#include "services/messages/NotificationCenter.h"
#include "services/threads/BackgroundThreads.h"

namespace vantory {

class BusyIndicator;

// Main thread, but for reload(). What it is given outlives it. Files are looked at, locked and unlocked on another
// thread, one change after the other.
class QWLockOutlineController : public SurveyedRows, public OutlineActions {
 public:
  QWLockOutlineController(OutlineView& outline, BusyIndicator& spinner);

  // Looks at all files again and shows what it found. On the main thread it returns before that is done, on any other
  // afterwards.
  void reload();

  // "name", what a survey tells, or the state of the lock.
  ObjectValue objectValueForTableColumn(const std::string& column, const OutlineItemPointer& byItem) override;
  void setObjectValue(const ObjectValue& value, const std::string& forTableColumn,
                      const OutlineItemPointer& byItem) override;
  void willDisplayCell(OutlineCell& cell, const std::string& forTableColumn, const OutlineItemPointer& item) override;

 protected:
  Rows rowsUnder(const OutlineItemPointer& item) const override;

 private:
  void runOnThread(std::function<void()> work);

  OutlineView& outline_;
  BusyIndicator& spinner_;
  SerialWork work_;
  NotificationCenter::Observation appRefresh_;
  NotificationCenter::Observation tabSwitch_;
};

}  // namespace vantory
