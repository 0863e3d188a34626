// The Restore pane: the library of backups, and what can be done with one.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "backups/QWDataController.h"
#include "backups/ui/CatalogRows.h"
#include "backups/ui/FailureReport.h"
#include "backups/ui/OutlineView.h"
#include "services/messages/NotificationCenter.h"
#include "services/threads/BackgroundThreads.h"

namespace vantory {

class BackupEditor;
class BusyIndicator;
class Button;
class PaneSwitcher;

// Main thread, but for the operations "OnThread". What it is given outlives it. What takes its time is done in the
// turn of the tasks.
class QWRestoreOutlineController : public RowsDelegate, public OutlineActions {
 public:
  struct Parts {
    OutlineView& outline;
    Button& defaultCommand;
    BusyIndicator& spinner;
    PaneSwitcher& panes;
  };
  explicit QWRestoreOutlineController(const Parts& parts);

  // The dialog that edits a backup; set before the pane is shown.
  void setEditor(BackupEditor& dialog) { dialog_ = &dialog; }

  // Shows the library anew, sorted as the person left it. Any thread; on the main thread, which must not wait for the
  // sizes of backups, it may return before they are measured and shown.
  void reload();
  // The backup of the selected row, or the one that the selected row lies in; null for none.
  std::shared_ptr<QWBackup> selectedBackup() const;
  // Nothing when the library does not hold it.
  void selectBackupWithPath(const std::string& path);

  // The commands. Each does nothing without a selected backup.
  void restore();
  void editBackup();
  void toggleDefault();
  void linkProject();
  void unlinkProjects();
  void revealLinkedProjects();
  void sendToMail();
  void updateFiles();
  // On the row of the automatic backups their folder is shown.
  void revealFinder();
  // Shows any file in the file manager, or where it is not there the folder that it was to be in.
  static void reveal(const std::string& path);

  // Runs what belongs to the pane in the turn of the tasks; its spinner turns meanwhile. Any thread.
  void runOnThread(std::function<void()> work);

  // Worker threads.
  void restoreOnThread(const std::shared_ptr<QWBackup>& backup);
  void updateBackupFilesOnThread(const std::shared_ptr<QWBackup>& backup);

  void applySortingForOutlineView();
  void showAge();
  void sortColumnWithIdentifier(const std::string& column, bool descending);
  void setSortIndicatorsForColumn(const std::string& column, bool descending);

  ObjectValue objectValueForTableColumn(const std::string& column, const OutlineItemPointer& byItem) override;
  void setObjectValue(const ObjectValue& value, const std::string& forTableColumn,
                      const OutlineItemPointer& byItem) override;
  void willDisplayCell(OutlineCell& cell, const std::string& forTableColumn, const OutlineItemPointer& item) override;
  void didClickTableColumn(const std::string& column) override;
  void selectionDidChange() override;
  void doubleClick() override { restore(); }
  bool keyUp(OutlineKey key) override;

 protected:
  Rows rowsUnder(const OutlineItemPointer& item) const override;

 private:
  // Answer whether the person wants it done once more. Worker threads.
  bool restoreOnce(QWBackup& backup, bool& isBackedUp);
  bool updateOnce(QWBackup& backup);
  void rename(const std::shared_ptr<QWBackup>& backup, const std::string& name);
  // The library's record of the backup now: it may have been listed anew since the command was given. Any thread.
  std::shared_ptr<QWBackup> recordInLibrary(const std::shared_ptr<QWBackup>& backup) const;

  // In bytes; none where it is not known, or not yet: it is measured then, and the row shown anew.
  std::optional<std::uint64_t> sizeOfRow(const OutlineItemPointer& item);
  void measure(const OutlineItemPointer& row);

  Parts parts_;
  SerialWork measuring_;
  std::set<std::shared_ptr<QWApp>> beingMeasured_;
  BackupEditor* dialog_ = nullptr;
  NotificationCenter::Observation backupsRefresh_;
  NotificationCenter::Observation tabSwitch_;
};

}  // namespace vantory
