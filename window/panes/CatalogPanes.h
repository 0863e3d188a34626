// The Backup pane's widgets.
#pragma once

#include "window/outline/OutlinePane.h"

namespace vantory {

class BackupPane : public OutlinePane {
 public:
  BackupPane();

  Command& backupCommand() { return backup_; }

 private:
  Command& backup_;
};

}  // namespace vantory
