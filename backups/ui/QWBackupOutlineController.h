// The Backup pane: what of the catalog goes into the next backup.
#pragma once

#include <memory>

#include "platform/OutlineView.h"
#include "services/NotificationCenter.h"

namespace vantory {

class BusyIndicator;
class Button;
class PaneSwitcher;
class QWBackup;
class QWRestoreOutlineController;

// Main thread, but for writeBackupOnThread(). What it is given outlives it.
class QWBackupOutlineController : public OutlineDelegate, public OutlineActions {
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

  std::size_t numberOfChildrenOfItem(const OutlineItemPointer& item) override;
  OutlineItemPointer child(std::size_t index, const OutlineItemPointer& ofItem) override;
  bool isItemExpandable(const OutlineItemPointer& item) override;
  ObjectValue objectValueForTableColumn(const std::string& column, const OutlineItemPointer& byItem) override;
  void setObjectValue(const ObjectValue& value, const std::string& forTableColumn,
                      const OutlineItemPointer& byItem) override;
  void willDisplayCell(OutlineCell& cell, const std::string& forTableColumn, const OutlineItemPointer& item) override;
  void mouseDownInHeaderOfTableColumn(const std::string& column) override;

 private:
  Parts parts_;
  int headerState_ = 1;
  NotificationCenter::Observation appRefresh_;
  NotificationCenter::Observation tabSwitch_;
};

}  // namespace vantory
