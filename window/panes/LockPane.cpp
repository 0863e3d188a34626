#include "window/panes/LockPane.h"

#include "window/controls/Command.h"

namespace vantory {

LockPane::LockPane()
    : OutlinePane(QStringLiteral("Tick what no application may change. Whatever is locked stays as it is until you "
                                 "unlock it."),
                  {{.identifier = "name", .title = QStringLiteral("Name")},
                   {.identifier = "locked", .title = QStringLiteral("Locked"), .width = 90}},
                  QStringLiteral("Applications and items that can be locked")),
      refresh_(addCommand(QStringLiteral("&Refresh"), QKeySequence(QKeySequence::Refresh))) {
  addButton(refresh_);
}

}  // namespace vantory
