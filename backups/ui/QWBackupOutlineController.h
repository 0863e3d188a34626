// The Backup pane: what of the catalog goes into the next backup.
#pragma once

#include <memory>

#include "backups/ui/OutlineView.h"
#include "backups/ui/SurveyedRows.h"
#include "services/messages/NotificationCenter.h"

namespace vantory {

class BusyIndicator;
class Button;
class PaneSwitcher;
class QWBackup;
class QWRestoreOutlineController;
class TaskReport;

// Main thread, but for writeBackupOnThread(). What it is given outlives it.
class QWBackupOutlineController : public SurveyedRows, public OutlineActions {
 public:
  struct Parts {
    OutlineView& outline;
    Button& backupButton;
    BusyIndicator& spinner;
    PaneSwitcher& panes;
    QWRestoreOutlineController& restoreController;
  };
  explicit QWBackupOutlineController(const Parts& parts);

  void reload();
  void updateHeaderCheckCell();
  // Writes the backup and tells the person how it went. Called on a worker thread.
  void writeBackupOnThread(const std::shared_ptr<QWBackup>& backup);
  // Shows the Restore pane with the backup's row selected.
  void selectBackupInRestoreTab(const std::shared_ptr<QWBackup>& backup);

  ObjectValue objectValueForTableColumn(const std::string& column, const OutlineItemPointer& byItem) override;
  void setObjectValue(const ObjectValue& value, const std::string& forTableColumn,
                      const OutlineItemPointer& byItem) override;
  void willDisplayCell(OutlineCell& cell, const std::string& forTableColumn, const OutlineItemPointer& item) override;
  void mouseDownInHeaderOfTableColumn(const std::string& column) override;

 protected:
  Rows rowsUnder(const OutlineItemPointer& item) const override;

 private:
  // Whether the person wants it written once more. Worker thread.
  bool writeOnce(const std::shared_ptr<QWBackup>& backup);

  Parts parts_;
  State headerState_ = On;
  NotificationCenter::Observation appRefresh_;
  NotificationCenter::Observation tabSwitch_;
};

}  // namespace vantory
