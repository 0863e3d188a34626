// The Restore pane's widgets.
#pragma once

#include <QMenu>

#include "window/outline/OutlinePane.h"

namespace vantory {

class RestorePane : public OutlinePane {
 public:
  RestorePane();

  // What the selected row allows; the commands that it does not are greyed.
  struct Selection {
    bool backup = false;       // a backup, or something in one
    bool backupRow = false;    // a backup itself
    bool hasProjects = false;  // it is linked to projects
    bool anyRow = false;
  };
  void showSelection(const Selection& selection);

  Command& restore;
  Command& compare;
  Command& edit;
  Command& toggleDefault;
  Command& rename;
  Command& remove;
  Command& linkProjects;
  Command& unlinkProjects;
  Command& revealProjects;
  Command& updateFiles;
  Command& sendToMail;
  Command& reveal;

 private:
  Command& addToSection(const QString& title, const QKeySequence& shortcut = {});

  QMenu menu_;
};

}  // namespace vantory
