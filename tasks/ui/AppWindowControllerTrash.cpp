// The trash workflow of the window: a safety backup, then the preferences of each ticked application to the Trash.

#include <algorithm>
#include <iterator>

#include "backups/QWDataController.h"
#include "backups/ui/Controls.h"
#include "backups/ui/Surveyor.h"
#include "base/Format.h"
#include "services/TaskReport.h"
#include "services/files/QWAuthorization.h"
#include "services/log/QWLog.h"
#include "services/messages/QWAlert.h"
#include "services/receipts/TaskReceipt.h"
#include "services/threads/BackgroundThreads.h"
#include "services/threads/MainThread.h"
#include "tasks/TrashRun.h"
#include "tasks/ui/AppWindowController.h"
#include "tasks/ui/QWLockOutlineController.h"

namespace vantory {

namespace {

constexpr const char* kTrashing = "Trashing preferences...";

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
  void waitingFor(const std::string& name) override {
    std::string label = kTrashing;
    if (!name.empty()) label += formatted(" Waiting for %@ to quit. It may be asking you something.", name);
    onMainThread([&] { sheet_.updateLabel(label); });
  }
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
    bool isBackedUp = false;
    while (trashPreferences(isBackedUp)) {
    }
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
bool AppWindowController::trashPreferences(bool& isBackedUp) {
  QWAuthorization::sharedController().beginTask();
  QWLog::appendLog("Trashing preferences...");
  onMainThread([this] {
    parts_.trashSpinner.startAnimation();
    progressController_.setIndeterminate();
    progressController_.updateLabel("Backing up...");
    progressController_.show();
  });
  TaskReport report;
  if (!isBackedUp) isBackedUp = autoBackupPrefs(report) == WriteResult::Success;

  const AppList apps = QWDataController::sharedController().appArray();
  onMainThread([&] {
    progressController_.setMaxProgress(static_cast<double>(apps.size()));
    progressController_.setProgress(0);
    progressController_.updateLabel(kTrashing);
  });
  TaskReceipt receipt(report, {.name = "trash"});
  TrashProgress progress(progressController_);
  TrashRun run(report, progress);
  const bool isThrough = run.run(stepsFor(apps));
  receipt.end();
  parts_.lockController.reload();
  onMainThread([this] {
    Surveyor::shared().renew();
    parts_.trashSpinner.stopAnimation();
  });
  return isThrough && finishTrash(run, report);
}

// Says how the run ended: a success only where everything was done.
bool AppWindowController::finishTrash(const TrashRun& run, const TaskReport& report) {
  onMainThread([this] { progressController_.hide(); });
  tellNotices(report);
  const bool any = run.count() > 0;
  if (report.isWhole()) {
    QWAlert::alertSheetWithMessageText(
        any ? "Preferences successfully trashed" : "No files to trash",
        withCauses(
            any ? "Please empty your Trash." : "There were no preference files on disk for the selected applications.",
            report));
    return false;
  }
  if (run.trashedAll()) {
    std::string reason = any ? formatted("%@ went to the Trash.", counted(run.count(), "file")) : "";
    if (report.isCancelled()) reason.append(any ? " " : "").append("The restore was cancelled.");
    return reportResult("The default backup could not be restored as a whole", reason, report, Retry::None);
  }
  return reportResult(any ? "Not everything was trashed" : "Nothing was trashed", "", report);
}

}  // namespace vantory
