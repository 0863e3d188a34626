// Gives each pane its sentence and its command.
#include "window/panes/CatalogPanes.h"

#include "window/controls/Command.h"
#include "window/outline/QWOutlineView.h"

namespace vantory {

namespace {

// Behind the pane's own columns, what a survey tells.
std::vector<OutlineColumn> withSurvey(std::vector<OutlineColumn> columns) {
  const std::vector<OutlineColumn> told = {
      {.identifier = "changed", .title = QStringLiteral("Last Change"), .width = 150},
      {.identifier = "kept", .title = QStringLiteral("Backed Up"), .width = 110},
      {.identifier = "files", .title = QStringLiteral("Files"), .width = 60, .alignment = Qt::AlignTrailing},
      {.identifier = "size", .title = QStringLiteral("Size"), .width = 90, .alignment = Qt::AlignTrailing}};
  columns.insert(columns.end(), told.begin(), told.end());
  return columns;
}

}  // namespace

BackupPane::BackupPane()
    : OutlinePane(QStringLiteral("Tick what the backup is to hold. Open an application to choose among its items. The "
                                 "Trash pane has the same "
                                 "ticks."),
                  withSurvey({{.identifier = "selected", .title = QStringLiteral("Application")}}),
                  QStringLiteral("Applications and items to back up")),
      backup_(addCommand(QStringLiteral("&Back Up…"), QKeySequence(QStringLiteral("Ctrl+B")))) {
  outline().showHeaderCheck();
  addMainButton(backup_);
}

LockPane::LockPane()
    : OutlinePane(QStringLiteral("Tick what no application may change. Whatever is locked stays as it is until you "
                                 "unlock it."),
                  withSurvey({{.identifier = "name", .title = QStringLiteral("Name")},
                              {.identifier = "locked", .title = QStringLiteral("Locked"), .width = 70}}),
                  QStringLiteral("Applications and items that can be locked")),
      refresh_(addCommand(QStringLiteral("&Refresh"), QKeySequence(QKeySequence::Refresh))) {
  addButton(refresh_);
}

TrashPane::TrashPane()
    : OutlinePane(QStringLiteral("Tick the applications that misbehave. Their preferences are backed up first, then "
                                 "moved to the Trash. The Backup pane has the same ticks."),
                  withSurvey({{.identifier = "selected", .title = QStringLiteral("Application")}}),
                  QStringLiteral("Applications whose preferences go to the Trash")),
      trash_(addCommand(QStringLiteral("Move Preferences to &Trash"), QKeySequence(QStringLiteral("Ctrl+Shift+T")))) {
  outline().showHeaderCheck();
  addMainButton(trash_);
}

}  // namespace vantory
