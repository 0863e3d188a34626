// The commands of the File and Help menus that concern the program as a whole.
#pragma once

#include <QObject>

#include "window/controls/Command.h"

class QMenu;

namespace vantory {

class WindowMenus : public QObject {
 public:
  explicit WindowMenus(QObject* parent);

  // Adds the commands to the window's menus, each of which may get more.
  void addTo(QMenu& file, QMenu& edit, QMenu& help);

  Command* const importBackup;
  Command* const undo;
  Command* const recentTasks;
  Command* const preferences;
  Command* const userManual;
  Command* const viewLog;
  Command* const viewTaskLog;
  Command* const gatherLogs;
  Command* const reportBug;
  Command* const suggestFeature;
  Command* const softwareUpdate;
  Command* const programHome;
  Command* const maintenanceToolsHome;
  Command* const makerHome;
};

}  // namespace vantory
