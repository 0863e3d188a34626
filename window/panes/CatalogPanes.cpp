// Gives each pane its sentence and its command.
#include "window/panes/CatalogPanes.h"

#include "window/controls/Command.h"
#include "window/outline/QWOutlineView.h"

namespace vantory {

BackupPane::BackupPane()
    : OutlinePane(QStringLiteral("Tick what the backup is to hold. Open an application to choose among its items."),
                  {{.identifier = "selected", .title = QStringLiteral("Application")}},
                  QStringLiteral("Applications and items to back up")),
      backup_(addCommand(QStringLiteral("&Back Up…"), QKeySequence(QStringLiteral("Ctrl+B")))) {
  outline().showHeaderCheck();
  addMainButton(backup_);
}

LockPane::LockPane()
    : OutlinePane(QStringLiteral("Tick what no application may change. Whatever is locked stays as it is until you "
                                 "unlock it."),
                  {{.identifier = "name", .title = QStringLiteral("Name")},
                   {.identifier = "locked", .title = QStringLiteral("Locked"), .width = 90}},
                  QStringLiteral("Applications and items that can be locked")),
      refresh_(addCommand(QStringLiteral("&Refresh"), QKeySequence(QKeySequence::Refresh))) {
  addButton(refresh_);
}

TrashPane::TrashPane()
    : OutlinePane(QStringLiteral("Tick the applications that misbehave. Their preferences are backed up first, then "
                                 "moved to the Trash."),
                  {{.identifier = "selected", .title = QStringLiteral("Application")}},
                  QStringLiteral("Applications whose preferences go to the Trash")),
      trash_(addCommand(QStringLiteral("Move Preferences to &Trash"), QKeySequence(QStringLiteral("Ctrl+Shift+T")))) {
  outline().showHeaderCheck();
  addMainButton(trash_);
}

}  // namespace vantory
