// Fills the menus.
#include "window/application/WindowMenus.h"

#include <QMenu>

namespace vantory {

WindowMenus::WindowMenus(QObject* parent)
    : QObject(parent),
      importBackup(new Command(QStringLiteral("&Import…"), this)),
      undo(new Command(QStringLiteral("&Undo"), this)),
      recentTasks(new Command(QStringLiteral("&Recent Tasks…"), this)),
      preferences(new Command(QStringLiteral("&Preferences…"), this)),
      userManual(new Command(QStringLiteral("Vantory User &Manual"), this)),
      viewLog(new Command(QStringLiteral("View &Log"), this)),
      viewTaskLog(new Command(QStringLiteral("View &Task Log"), this)),
      gatherLogs(new Command(QStringLiteral("&Gather Logs"), this)),
      reportBug(new Command(QStringLiteral("Report a &Bug…"), this)),
      suggestFeature(new Command(QStringLiteral("&Suggest a Feature…"), this)),
      softwareUpdate(new Command(QStringLiteral("Check for &Updates…"), this)),
      programHome(new Command(QStringLiteral("&Vantory Home Page"), this)),
      maintenanceToolsHome(new Command(QStringLiteral("Gear&wright Home Page"), this)),
      makerHome(new Command(QStringLiteral("&Quarrywell Home Page"), this)) {
  importBackup->setShortcut(QKeySequence(QKeySequence::Open));
  undo->setShortcut(QKeySequence(QKeySequence::Undo));
  undo->setEnabled(false);
  preferences->setShortcut(QKeySequence(QStringLiteral("Ctrl+,")));
  preferences->setMenuRole(QAction::PreferencesRole);
  userManual->setShortcut(QKeySequence(QKeySequence::HelpContents));
  importBackup->setToolTip(
      QStringLiteral("Copy a backup from elsewhere into the library, and restore it where you wish"));
  gatherLogs->setToolTip(QStringLiteral("Put the logs into one archive on the desktop, for the maker's support"));
}

// What the window adds comes behind.
void WindowMenus::addTo(QMenu& file, QMenu& edit, QMenu& help) {
  file.addAction(importBackup);
  file.addSeparator();
  file.addAction(preferences);
  file.addSeparator();
  edit.addActions({undo, recentTasks});
  help.addAction(userManual);
  help.addSeparator();
  help.addActions({viewLog, viewTaskLog, gatherLogs});
  help.addSeparator();
  help.addActions({reportBug, suggestFeature});
  help.addSeparator();
  help.addActions({programHome, maintenanceToolsHome, makerHome});
  help.addSeparator();
  help.addAction(softwareUpdate);
  for (QMenu* menu : {&file, &help}) menu->setToolTipsVisible(true);
}

}  // namespace vantory
