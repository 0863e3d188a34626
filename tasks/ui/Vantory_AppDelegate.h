// What the windowed program does as a whole: start, open documents, serve the menus, quit.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "base/Result.h"
#include "settings/ui/PreferenceView.h"

namespace vantory {

class Button;
class FileChooser;
class MainWindowView;
class PaneSwitcher;

// Main thread, but for the operations that say otherwise. What it is given outlives it.
class Vantory_AppDelegate : public PreferenceDelegate {
 public:
  struct Parts {
    MainWindowView& window;
    PaneSwitcher& panes;
    FileChooser& chooser;
    Button& menuPrefs;
    std::function<void()> quit;             // ends the event loop
    std::function<void()> openPreferences;  // shows the settings window
    // Runs the work on another thread, as the Restore pane does its own and never beside that.
    std::function<void(std::function<void()> work)> restoreOnThread;
    // Selects that backup of the library in the Restore pane. Called on another thread.
    std::function<void(const std::string& path)> selectBackup = {};
  };

  explicit Vantory_AppDelegate(Parts parts) : parts_(std::move(parts)) {}

  // --- Start and quit ---

  // Called first. False when the program is to quit at once: an administrator is required, and there was none.
  [[nodiscard]] bool awakeFromNib();
  // Called when the window has been shown, or after the projects that the program was started for have been opened.
  void applicationDidFinishLaunching();
  bool applicationShouldTerminateAfterLastWindowClosed() const { return !wasOpenedByProjectFile_; }
  // Called when no work runs any more; saves the ticks and records the orderly end.
  void applicationWillTerminate();

  // --- Documents ---

  // Opens a backup, after asking, or a project with its application, which ends the program. What is neither is handed
  // on to the desktop, which ends the program too; false then. The work is done on another thread.
  bool openFile(const std::string& path);
  // Opens each as soon as no work runs any more, one after the other.
  void openFiles(const std::vector<std::string>& paths);
  // Asks the person for a backup, and opens it.
  void importBackup();

  // Restores the backup that the project is linked to, opens the project, and ends the program when all work has ended.
  // Worker thread, in its turn of the tasks.
  void openProject(const std::string& path, const std::string& withApplication);
  // Runs a script, of which nobody hears how it went. False where there is no such thing.
  bool executeApplescript(const std::string& script);
  void activateApplicationWithName(const std::string& name);

  // --- Menus ---

  void showPreferences();
  void disablePrefsMenu() override;
  void enablePrefsMenu() override;

  void gatherLogs();
  void viewTaskLog();
  void viewLog();
  void menuSoftwareUpdate();
  void helpReportBug();
  void helpSuggestFeature();
  void helpQWHome();
  void helpGearwrightHome();
  void helpVantoryHome();
  void helpUserManual();
  // Whether there is anything to open. The first asks the desktop; any thread.
  static bool hasSoftwareUpdate();
  static bool hasUserManual();

 private:
  void askToImport(const std::string& path);
  void addWithoutRestoring(const std::string& path);
  void handOn(const std::string& path);
  static bool restoreBackupLinkedTo(const std::string& project);
  void openInApplication(const std::string& project, const std::string& bundleID);
  void showSystemSettings(bool wasRunning);
  void terminate();

  const Parts parts_;
  bool wasOpenedByProjectFile_ = false;
};

}  // namespace vantory
