// The panes that show the catalog with check boxes.
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

class LockPane : public OutlinePane {
 public:
  LockPane();

  // Looks at the files' locks again.
  Command& refreshCommand() { return refresh_; }

 private:
  Command& refresh_;
};

class TrashPane : public OutlinePane {
 public:
  TrashPane();

  Command& trashCommand() { return trash_; }

 private:
  Command& trash_;
};

}  // namespace vantory
