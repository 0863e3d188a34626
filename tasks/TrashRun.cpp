// How preferences are trashed, for whoever asked for it.
#include "tasks/TrashRun.h"

#include "backups/DefaultBackup.h"
#include "backups/QWDataController.h"
#include "services/QWCmdUtils.h"
#include "services/TaskReport.h"
#include "services/log/QWLog.h"
#include "services/settings/QWUserDefaults.h"
#include "services/settings/SettingsKeys.h"

namespace vantory {

bool TrashRun::run(const std::vector<TrashStep>& steps) {
  for (const TrashStep& step : steps)
    if (!isCancelled() && take(step)) observer_.stepDone();
  if (isCancelled()) {
    QWLog::appendLog("User cancelled trash task");
    return false;
  }
  trashedAll_ = report_.isWhole();
  observer_.trashed(count_);
  restoreDefault();
  observer_.finishing();
  applications_.relaunch([this] { observer_.relaunching(); });
  return true;
}

bool TrashRun::isCancelled() {
  if (observer_.isCancelled()) report_.cancelled();
  return report_.isCancelled();
}

// False when the step was passed over.
bool TrashRun::take(const TrashStep& step) {
  if (step.app && applications_.makeWay(*step.app, false) != ClosedApplications::Answer::Proceed) return false;
  for (const auto& item : step.items) count_ += item->trash(report_);
  if (step.app) step.app->updateLockStatus();
  return true;
}

void TrashRun::restoreDefault() {
  if (QWUserDefaults::standardUserDefaults().integerForKey(setting::kAutoRestoreDefault) != 1) return;
  QWLog::appendLog("Finding default backup to restore...");
  // The library is searched as it stands: whoever wants it listed has done so.
  const auto backup = QWDataController::sharedController().defaultBackup();
  if (!backup) {
    if (QWCmdUtils::sharedController().hasGUI()) remarkOnNamedDefault(report_);
    return;
  }
  observer_.restoringDefault();
  backup->restore(report_);
}

}  // namespace vantory
