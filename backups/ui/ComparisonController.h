// The comparison of a backup with the present files, and the restoring of what was ticked in it.
#pragma once

#include <atomic>
#include <memory>
#include <string>

#include "backups/ui/CatalogRows.h"
#include "backups/ui/ComparisonRows.h"
#include "backups/ui/FailureReport.h"

namespace vantory {

class ComparisonView;
class QWBackup;

// Main thread, but for restoreOnThread() and restoreOnce(). What it is given outlives it.
class ComparisonController : public OutlineDelegate {
 public:
  explicit ComparisonController(ComparisonView& view) : view_(view) {}

  // Shows the view, and fills it when the comparison, which is a look, has been made on another thread. Nothing without
  // a backup.
  void compare(const std::shared_ptr<QWBackup>& backup);
  // Ends a comparison that is being made.
  void close();
  // Asks, restores what is ticked in the turn of the tasks, and compares anew.
  void restoreTicked();

  std::size_t numberOfChildrenOfItem(const OutlineItemPointer& item) override { return rowsUnder(item).size(); }
  OutlineItemPointer child(std::size_t index, const OutlineItemPointer& ofItem) override;
  bool isItemExpandable(const OutlineItemPointer& item) override { return !rowsUnder(item).empty(); }
  ObjectValue objectValueForTableColumn(const std::string& column, const OutlineItemPointer& byItem) override;
  void setObjectValue(const ObjectValue& value, const std::string& forTableColumn,
                      const OutlineItemPointer& byItem) override;
  void willDisplayCell(OutlineCell& cell, const std::string& forTableColumn, const OutlineItemPointer& item) override;

 private:
  using Ended = std::shared_ptr<std::atomic<bool>>;

  const ComparisonRows& rowsUnder(const OutlineItemPointer& item) const;
  void showRows(std::shared_ptr<const Comparison> comparison);
  void restoreOnThread(const std::shared_ptr<QWBackup>& backup, const std::vector<ItemChoice>& choices);
  // Whether the person wants it tried again.
  static bool restoreOnce(const std::shared_ptr<QWBackup>& backup, const std::vector<ItemChoice>& choices,
                          bool& isBackedUp);

  ComparisonView& view_;
  std::shared_ptr<QWBackup> backup_;
  std::shared_ptr<const Comparison> comparison_;  // what the rows point into
  ComparisonRows applications_;
  Ended ended_ = std::make_shared<std::atomic<bool>>(false);  // of the comparison that is being made
};

}  // namespace vantory
