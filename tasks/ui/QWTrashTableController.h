// The Trash pane: whose preferences go to the Trash.
#pragma once

#include "backups/ui/OutlineView.h"
#include "backups/ui/SurveyedRows.h"
#include "services/messages/NotificationCenter.h"

namespace vantory {

class Button;

// Main thread. What it is given outlives it.
class QWTrashTableController : public SurveyedRows, public OutlineActions {
 public:
  QWTrashTableController(OutlineView& outline, Button& trashButton);

  void reload();
  void updateHeaderCheckCell();

  ObjectValue objectValueForTableColumn(const std::string& column, const OutlineItemPointer& byItem) override;
  void setObjectValue(const ObjectValue& value, const std::string& forTableColumn,
                      const OutlineItemPointer& byItem) override;
  void willDisplayCell(OutlineCell& cell, const std::string& forTableColumn, const OutlineItemPointer& item) override;
  void mouseDownInHeaderOfTableColumn(const std::string& column) override;

 protected:
  Rows rowsUnder(const OutlineItemPointer& item) const override;
  Standing standingIn(const Survey& survey, const OutlineItemPointer& row) const override;
  bool isTickedThere(const Survey& survey, const QWApp& app) const override;

 private:
  OutlineView& outline_;
  Button& trashButton_;
  State headerState_ = On;
  NotificationCenter::Observation appRefresh_;
  NotificationCenter::Observation tabSwitch_;
};

}  // namespace vantory
