#include "window/panes/TrashPane.h"

#include "window/controls/Command.h"
#include "window/outline/QWOutlineView.h"

namespace vantory {

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
