// The main window with its dialogs, and the controllers behind them.
#pragma once

#include <functional>

#include "backups/ui/ComparisonController.h"
#include "backups/ui/QWBackupEditController.h"
#include "backups/ui/QWBackupOutlineController.h"
#include "backups/ui/QWRestoreOutlineController.h"
#include "platform/SingleInstance.h"
#include "tasks/ui/AppWindowController.h"
#include "tasks/ui/QWLockOutlineController.h"
#include "tasks/ui/QWTrashTableController.h"
#include "tasks/ui/UndoController.h"
#include "tasks/ui/Vantory_AppDelegate.h"
#include "window/application/MainWindow.h"
#include "window/application/RecentTasksDialog.h"
#include "window/application/WindowMemory.h"
#include "window/dialogs/AlertSheets.h"
#include "window/dialogs/BackupDialog.h"
#include "window/dialogs/ProgressDialog.h"
#include "window/dialogs/QtFileChooser.h"
#include "window/panes/ComparisonWindow.h"
#include "window/settings/SettingsSession.h"

namespace vantory {

// Main thread. While it lives, alerts are shown on its windows.
class WindowSession {
 public:
  // The user's home folder, where the window's looks are kept.
  explicit WindowSession(const std::string& home);
  ~WindowSession();

  MainWindow& window() { return window_; }

  // Shows the window, fills it once it is painted, and then opens the files. Started for nothing but files that need no
  // window, it opens them without one. False when the program is to quit at once.
  [[nodiscard]] bool open(const std::vector<std::string>& files = {});
  bool quitsWithLastWindow() const { return delegate_.applicationShouldTerminateAfterLastWindowClosed(); }
  // Does the work once the window is there for its questions.
  void whenPainted(std::function<void()> work);
  // Another start of the program asks for this.
  void receive(const OpenRequest& request);
  // Whether files alone are reason to open the window.
  static bool needsWindow(const std::vector<std::string>& files);
  // Whether the files are all for other applications: then this start is none of the program's own, and leaves the log
  // and the record of a copy that is open alone.
  static bool onlyHandsOn(const std::vector<std::string>& files);

 private:
  void connectWindow();
  void connectCatalogPanes();
  void connectRestorePane();
  void connectDialogs();
  void connectMenus();
  void enableHelp();
  void choosePane(Pane pane);
  void showSelection();
  void selectBackup(const std::string& path);
  void listRecentTasks();
  QWidget* windowOf(AlertParent parent);
  bool mayClose();
  bool wantsToQuit();
  void finish();
  void openFiles(const std::vector<std::string>& files);

  WindowMemory memory_;
  MainWindow window_;
  BackupDialog dialog_;
  ComparisonWindow comparisonWindow_;
  ProgressDialog progress_;
  QtFileChooser chooser_;
  QtFileChooser importChooser_;
  AlertSheets alerts_;
  QWLockOutlineController lock_;
  AppWindowController app_;
  QWTrashTableController trash_;
  QWRestoreOutlineController restore_;
  QWBackupOutlineController backup_;
  QWBackupEditController edit_;
  ComparisonController comparison_;
  Vantory_AppDelegate delegate_;
  SettingsSession settings_;
  RecentTasksDialog recentTasks_;
  UndoController undo_;
  bool painted_ = false;
  bool onlyHandsOn_ = false;
  // For the window to be painted:
  std::vector<std::string> waitingFiles_;
  std::vector<std::function<void()>> waitingWork_;
};

}  // namespace vantory
