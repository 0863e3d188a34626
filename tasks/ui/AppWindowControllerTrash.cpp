// The trash workflow of the window: a safety backup, then the preferences of each ticked application to the Trash.

#include <chrono>

#include "backups/QWDataController.h"
#include "platform/Clock.h"
#include "platform/Controls.h"
#include "platform/Workspace.h"
#include "services/RunningApplicationGuard.h"
#include "services/Runtime.h"
#include "services/files/QWAuthorization.h"
#include "services/log/QWLog.h"
#include "services/messages/QWAlert.h"
#include "services/settings/QWUserDefaults.h"
#include "services/settings/SettingsKeys.h"
#include "services/threads/BackgroundThreads.h"
#include "services/threads/MainThread.h"
#include "tasks/ui/AppWindowController.h"
#include "tasks/ui/QWLockOutlineController.h"

namespace vantory {

namespace {

void onMainThread(const std::function<void()>& work) {
  MainThread::shared().runAndWait(work);
}

GuardDecision askGuard(const QWApp& app) {
  RunningApplicationGuard* guard = Runtime::current().guard;
  return guard ? guard->checkRunningAppsForName(app.name(), app.bundleID(), false) : GuardDecision::NotRunning;
}

int trashPreferencesOf(QWApp& app) {
  int trashed = 0;
  for (const auto& item : app.children())
    if (item->isPreferences()) trashed += item->trash();
  app.updateLockStatus();
  return trashed;
}

}  // namespace

struct AppWindowController::TrashRun {
  int trashed = 0;
  std::vector<std::string> closed;  // bundle identifiers, in the order they were closed
};

void AppWindowController::trash() {
  if (trashing_.exchange(true)) return;
  // Until its turn comes.
  parts_.trashSpinner.startAnimation();
  const bool added = SerialWork::tasks().add([this] {
    onMainThread([this] { parts_.trashSpinner.stopAnimation(); });
    trashPreferences();
    // After a cancel the sheet still covers the window. The next run must not find it on its way out.
    onMainThread([this] {
      progressController_.hide();
      trashing_ = false;
    });
  });
  if (added) return;
  parts_.trashSpinner.stopAnimation();
  trashing_ = false;
}

void AppWindowController::trashPreferences() {
  QWAuthorization::sharedController().beginTask();
  QWLog::appendLog("Trashing preferences...");
  onMainThread([this] {
    parts_.trashSpinner.startAnimation();
    progressController_.setIndeterminate();
    progressController_.updateLabel("Backing up...");
    progressController_.show();
  });
  autoBackupPrefs();

  const AppList apps = QWDataController::sharedController().appArray();
  onMainThread([&] {
    progressController_.setMaxProgress(static_cast<double>(apps.size()));
    progressController_.updateLabel("Trashing preferences...");
  });
  TrashRun run;
  for (const auto& app : apps) {
    if (!progressController_.isCancelled() && trashApplication(*app, run)) continue;
    QWLog::appendLog("User cancelled trash task");
    onMainThread([this] { parts_.trashSpinner.stopAnimation(); });
    return;
  }
  QWLog::appendLog("Total trashed files: %i", run.trashed);
  restoreDefault();
  relaunch(run.closed);
  finishTrash(run.trashed);
}

// False when the person answered to cancel the whole workflow. What was skipped does not count as progress.
bool AppWindowController::trashApplication(QWApp& app, TrashRun& run) {
  if (app.selected() != Off) {
    switch (askGuard(app)) {
      case GuardDecision::Cancel:
        return false;
      case GuardDecision::Skip:
        QWLog::appendLog("User chose to skip app");
        return true;
      case GuardDecision::CloseAndRelaunch:
        QWLog::appendLog("User chose to close and relaunch app");
        if (!Runtime::current().guard->closeAppWithName(app.name(), app.bundleID())) {
          QWLog::appendLog("Unable to close application");
          return true;
        }
        QWLog::appendLog("Application closed successfully");
        run.closed.push_back(app.bundleID());
        break;
      case GuardDecision::NotRunning:
        break;
    }
    run.trashed += trashPreferencesOf(app);
  }
  onMainThread([this] { progressController_.incrementProgress(); });
  return true;
}

void AppWindowController::restoreDefault() {
  if (QWUserDefaults::standardUserDefaults().integerForKey(setting::kAutoRestoreDefault) != 1) return;
  QWLog::appendLog("Finding default backup to restore...");
  const auto backup = QWDataController::sharedController().defaultBackup();
  if (!backup) return;
  onMainThread([this] {
    progressController_.updateLabel("Restoring default backup...");
    progressController_.setIndeterminate();
  });
  backup->restore();
}

void AppWindowController::relaunch(const std::vector<std::string>& bundleIDs) {
  QWLog::appendLog("Relaunching applications...");
  if (bundleIDs.empty()) return;
  Platform& platform = Runtime::current().platform();
  platform.clock.sleep(std::chrono::seconds(1));
  onMainThread([this] {
    progressController_.updateLabel("Relaunching applications...");
    progressController_.setIndeterminate();
  });
  for (const std::string& bundleID : bundleIDs)
    if (!platform.workspace.launchApplication(bundleID)) QWLog::appendLog("Couldn't relaunch %@", bundleID);
}

void AppWindowController::finishTrash(int trashed) {
  parts_.lockController.reload();
  onMainThread([this] {
    parts_.trashSpinner.stopAnimation();
    progressController_.hide();
  });
  if (trashed < 1)
    QWAlert::alertSheetWithMessageText("No files to trash",
                                       "There were no preference files on disk for the selected applications.");
  else
    QWAlert::alertSheetWithMessageText("Preferences successfully trashed", "Please empty your Trash.");
}

}  // namespace vantory
