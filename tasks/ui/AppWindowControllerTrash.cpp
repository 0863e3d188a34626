// The trash workflow of the window: a safety backup, then the preferences of each ticked application to the Trash.

#include <algorithm>
#include <iterator>

#include "backups/QWDataController.h"
#include "backups/ui/Controls.h"
#include "backups/ui/FailureReport.h"
#include "services/TaskReport.h"
#include "services/files/QWAuthorization.h"
#include "services/log/QWLog.h"
#include "services/messages/QWAlert.h"
#include "services/threads/BackgroundThreads.h"
#include "services/threads/MainThread.h"
#include "tasks/TrashRun.h"
#include "tasks/ui/AppWindowController.h"
#include "tasks/ui/QWLockOutlineController.h"

namespace vantory {

namespace {

void onMainThread(const std::function<void()>& work) {
  MainThread::shared().runAndWait(work);
}

// Of each ticked application the items that hold preferences proper.
std::vector<TrashStep> stepsFor(const AppList& apps) {
  std::vector<TrashStep> steps;
  for (const auto& app : apps) {
    // One without a tick is a step all the same: the progress counts applications.
    TrashStep& step = steps.emplace_back();
    if (app->selected() == Off) continue;
    step.app = app;
    std::ranges::copy_if(app->children(), std::back_inserter(step.items),
                         [](const auto& item) { return item->isPreferences(); });
  }
  return steps;
}

}  // namespace

// Shows how far the run is, and heeds the sheet's Cancel.
class AppWindowController::TrashProgress : public TrashObserver {
 public:
  explicit TrashProgress(QWProgressController& sheet) : sheet_(sheet) {}

  bool isCancelled() const override { return sheet_.isCancelled(); }
  void stepDone() override {
    onMainThread([this] { sheet_.incrementProgress(); });
  }
  void trashed(int count) override {
    QWLog::appendLog("Total trashed files: %i", count);
    onMainThread([this] { sheet_.disableCancel(); });
  }
  void restoringDefault() override { showStage("Restoring default backup..."); }
  void finishing() override { QWLog::appendLog("Relaunching applications..."); }
  void relaunching() override { showStage("Relaunching applications..."); }

 private:
  void showStage(const char* label) {
    onMainThread([&] {
      sheet_.updateLabel(label);
      sheet_.setIndeterminate();
    });
  }

  QWProgressController& sheet_;
};

void AppWindowController::trash() {
  if (trashing_.exchange(true)) return;
  // Until its turn comes.
  parts_.trashSpinner.startAnimation();
  const bool added = startTask([this] {
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

// Runs beside the main thread, which shows how far it is.
void AppWindowController::trashPreferences() {
  QWAuthorization::sharedController().beginTask();
  QWLog::appendLog("Trashing preferences...");
  onMainThread([this] {
    parts_.trashSpinner.startAnimation();
    progressController_.setIndeterminate();
    progressController_.updateLabel("Backing up...");
    progressController_.show();
  });
  TaskReport report;
  autoBackupPrefs(report);

  const AppList apps = QWDataController::sharedController().appArray();
  onMainThread([&] {
    progressController_.setMaxProgress(static_cast<double>(apps.size()));
    progressController_.setProgress(0);
    progressController_.updateLabel("Trashing preferences...");
  });
  TrashProgress progress(progressController_);
  TrashRun run(report, progress);
  if (run.run(stepsFor(apps))) return finishTrash(run, report);
  onMainThread([this] { parts_.trashSpinner.stopAnimation(); });
}

// Says how the run ended: a success only where everything was done.
void AppWindowController::finishTrash(const TrashRun& run, const TaskReport& report) {
  parts_.lockController.reload();
  onMainThread([this] {
    parts_.trashSpinner.stopAnimation();
    progressController_.hide();
  });
  if (report.isWhole() && run.count() < 1)
    QWAlert::alertSheetWithMessageText(
        "No files to trash",
        withCauses("There were no preference files on disk for the selected applications.", report));
  else if (report.isWhole())
    QWAlert::alertSheetWithMessageText("Preferences successfully trashed",
                                       withCauses("Please empty your Trash.", report));
  else if (run.trashedAll())
    vantory::reportFailure("The default backup could not be restored as a whole",
                           withCauses(report.isCancelled() ? "The restore was cancelled." : "", report));
  else
    vantory::reportFailure(run.count() < 1 ? "Nothing was trashed" : "Not everything was trashed", report.causes());
}

}  // namespace vantory
