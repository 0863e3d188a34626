// The AppController of the windowed program: the main window's panes and the tasks that they start.
#pragma once

#include <atomic>
#include <string>
#include <vector>

#include "backups/QWBackup.h"
#include "backups/ui/FailureReport.h"
#include "backups/ui/PaneSwitcher.h"
#include "services/messages/NotificationCenter.h"
#include "services/messages/QWProgressController.h"
#include "tasks/AppController.h"

namespace vantory {

class BugReporterDelegate;
class BusyIndicator;
class MainWindowView;
enum class Pane;
class QWLockOutlineController;
class TaskReport;
class TrashRun;

// Main thread, but for the operations that say otherwise. What it is given outlives it.
class AppWindowController : public AppController, public PaneSwitcher {
 public:
  struct Parts {
    MainWindowView& window;
    BusyIndicator& trashSpinner;
    ProgressSheet& progressSheet;
    QWLockOutlineController& lockController;
  };

  // Records the start, and opens a new log named after the program. Called before any pane is made. The delegate, which
  // may be null, is told of a crash.
  static void startLog(BugReporterDelegate* delegate);

  explicit AppWindowController(const Parts& parts);

  // Loads the catalog and the library and shows the Trash pane, on another thread; a person without a manual
  // backup gets a first one. Called once the window is painted.
  void load();

  void toolbarTrash();
  void toolbarBackup() override;
  void toolbarLock();
  void toolbarRestore() override;

  // Starts the trash workflow on another thread, unless one runs or waits for its turn.
  void trash();
  // The workflow; whether the person wants it done once more. Worker thread.
  bool trashPreferences(bool& isBackedUp);

  // Make an automatic backup, of everything or of preferences proper, and delete the oldest beyond the number wanted.
  // The report of the task that it is made for gets a remark where that failed. Worker threads.
  WriteResult autoBackup(TaskReport& task);
  WriteResult autoBackupPrefs(TaskReport& task);

  QWProgressController& progressController() { return progressController_; }

 private:
  class TrashProgress;

  void switchTo(Pane pane, const char* logLine, const char* notification);
  void makeFirstBackup();
  void warnOfOverdueBackups();
  WriteResult writeAutoBackup(TaskReport& task, bool preferencesOnly);
  bool finishTrash(const TrashRun& run, const TaskReport& report);

  Parts parts_;
  QWProgressController progressController_;
  std::atomic<bool> trashing_ = false;
  NotificationCenter::Observation backupsRefresh_;
};

}  // namespace vantory
