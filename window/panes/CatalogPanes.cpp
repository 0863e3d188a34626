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

}  // namespace vantory
