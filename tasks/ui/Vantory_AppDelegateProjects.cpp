// How a project is opened: with the preferences that belong to it.

#include <algorithm>
#include <chrono>
#include <exception>

#include "backups/LibraryFolder.h"
#include "backups/QWDataController.h"
#include "backups/ui/FailureReport.h"
#include "base/Paths.h"
#include "base/Text.h"
#include "platform/Clock.h"
#include "platform/Workspace.h"
#include "services/Runtime.h"
#include "services/TaskReport.h"
#include "services/files/QWAuthorization.h"
#include "services/log/QWException.h"
#include "services/log/QWLog.h"
#include "services/messages/QWGrowl.h"
#include "services/receipts/TaskReceipt.h"
#include "services/settings/QWUserDefaults.h"
#include "services/settings/SettingsKeys.h"
#include "services/threads/BackgroundThreads.h"
#include "services/threads/MainThread.h"
#include "tasks/ui/Vantory_AppDelegate.h"

namespace vantory {

namespace {

using namespace std::chrono_literals;

constexpr const char* kFinalCutPro = "com.apple.FinalCutPro";
// Opens the system settings of Final Cut Pro by their shortcut.
constexpr const char* kShowSystemSettings =
    "tell application \"Final Cut Pro\" to activate\n"
    "delay 0.5\n"
    "tell application \"System Events\" to tell process \"Final Cut Pro\"\n"
    "keystroke \"q\" using shift down\n"
    "end tell";

Workspace& workspace() {
  return Runtime::current().platform().workspace;
}

void wait(std::chrono::seconds duration) {
  Runtime::current().platform().clock.sleep(duration);
}

// Among the backups made by hand; null when none is.
std::shared_ptr<QWBackup> backupLinkedTo(const std::string& project) {
  for (const auto& node : QWDataController::sharedController().backupArray()) {
    auto backup = std::dynamic_pointer_cast<QWBackup>(node);
    if (backup && std::ranges::count(backup->projects(), project) > 0) return backup;
  }
  return nullptr;
}

// Tells where a backup that the project is linked to may be out of reach. The usual library is made with its first
// backup only.
void reportUnreachableLibrary() {
  const char* failure = "The backups could not be looked through for this project";
  if (const auto error = QWDataController::sharedController().libraryError())
    return reportFailure(failure, error->text);
  const auto missing = missingLibraryInWords();
  if (missing && libraryFolder() != usualLibraryFolder()) reportFailure(failure, *missing);
}

bool wantsSystemSettings(const std::string& bundleID) {
  return QWUserDefaults::standardUserDefaults().integerForKey(setting::kShowSystemSettings) == 1 &&
         lowerCased(bundleID) == lowerCased(kFinalCutPro);
}

}  // namespace

// The preferences come first: the application reads them when it starts.
void Vantory_AppDelegate::openProject(const std::string& path, const std::string& withApplication) {
  try {
    const bool restored = restoreBackupLinkedTo(path);
    if (workspace().applicationPath(withApplication)) {
      const Result<bool> running = workspace().isRunning(kFinalCutPro);
      openInApplication(path, withApplication);
      MainThread::shared().runAndWait([&] { activateApplicationWithName(withApplication); });
      if (!restored && wantsSystemSettings(withApplication)) showSystemSettings(running && *running);
    } else {
      QWLog::appendLogAndPrint("Unable to open %@ - the application %@ is not installed", path, withApplication);
    }
  } catch (const std::exception& exception) {
    QWException::logException(exception, "openProject:withApplication:");
  }
  terminate();
}

// True when there is such a backup, whatever became of the restore.
bool Vantory_AppDelegate::restoreBackupLinkedTo(const std::string& project) {
  QWDataController::sharedController().populateBackups();
  const auto backup = backupLinkedTo(project);
  if (!backup) {
    reportUnreachableLibrary();
    return false;
  }
  QWLog::appendLog("Restoring backup %@, which the project is linked to", backup->name());
  QWAuthorization::sharedController().beginTask();
  QWGrowl::postGrowlNotification("Restoring preferences...", "");
  TaskReport report;
  TaskReceipt receipt(report, {.name = "restore", .operands = {backup->path()}});
  backup->restore(report);
  receipt.end();
  reportIncompleteRestore(report);
  return true;
}

void Vantory_AppDelegate::openInApplication(const std::string& project, const std::string& bundleID) {
  wait(1s);
  QWLog::appendLog("Opening project %@ with application", project);
  if (const Status opened = workspace().openFile(project, bundleID); !opened)
    reportFailure(formatted("The project \"%@\" could not be opened", paths::lastComponent(project)),
                  opened.error().text);
  wait(1s);
}

void Vantory_AppDelegate::showSystemSettings(bool wasRunning) {
  if (!wasRunning) wait(6s);
  QWLog::appendLog("Sending prefs keyboard shortcut to Final Cut Pro");
  MainThread::shared().runAndWait([this] { executeApplescript(kShowSystemSettings); });
}

// The name that every desktop knows an application by is its identifier. One that has just been started comes to the
// front by itself, and on some desktops others may not be brought there by a stranger.
void Vantory_AppDelegate::activateApplicationWithName(const std::string& name) {
  (void)workspace().activateApplication(name);
}

bool Vantory_AppDelegate::executeApplescript(const std::string& script) {
  const Status ran = workspace().runScript(script);
  if (!ran && ran.error().code == std::errc::not_supported)
    QWLog::appendLog("Unable to send keystrokes to another application on this system");
  else if (!ran)
    QWLog::appendLog("Unable to send keystrokes to another application: %@", ran.error().text);
  return ran.ok();
}

}  // namespace vantory
