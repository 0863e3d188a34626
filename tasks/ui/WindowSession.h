// The main window with its dialogs, and the controllers behind them.
#pragma once

#include "backups/ui/BackupDialog.h"
#include "backups/ui/QWBackupEditController.h"
#include "backups/ui/QWBackupOutlineController.h"
#include "backups/ui/QWRestoreOutlineController.h"
#include "platform/qt/ProgressDialog.h"
#include "platform/qt/QtFileChooser.h"
#include "settings/ui/SettingsSession.h"
#include "tasks/ui/AlertSheets.h"
#include "tasks/ui/AppWindowController.h"
#include "tasks/ui/MainWindow.h"
#include "tasks/ui/QWLockOutlineController.h"
#include "tasks/ui/QWTrashTableController.h"
#include "tasks/ui/WindowMemory.h"

namespace vantory {

// Main thread. While it lives, alerts are shown on its windows.
class WindowSession {
 public:
  // The user's home folder, where the window's looks are kept.
  explicit WindowSession(const std::string& home);
  ~WindowSession();

  MainWindow& window() { return window_; }

  // Shows the window, and fills it once it is painted.
  void open();

 private:
  void connectWindow();
  void connectCatalogPanes();
  void connectRestorePane();
  void connectDialogs();
  void choosePane(Pane pane);
  void showRememberedPane();
  void showSelection();
  QWidget* windowOf(AlertParent parent);
  bool mayClose();
  void finish();

  WindowMemory memory_;
  MainWindow window_;
  BackupDialog dialog_;
  ProgressDialog progress_;
  QtFileChooser chooser_;
  SettingsSession settings_;
  AlertSheets alerts_;
  QWLockOutlineController lock_;
  AppWindowController app_;
  QWTrashTableController trash_;
  QWRestoreOutlineController restore_;
  QWBackupOutlineController backup_;
  QWBackupEditController edit_;
};

}  // namespace vantory
