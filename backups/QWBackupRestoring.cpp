#include <algorithm>

#include "backups/BackupFolder.h"
#include "backups/QWBackup.h"
#include "platform/Clock.h"
#include "platform/FileSystem.h"
#include "platform/Workspace.h"
#include "services/FailureTally.h"
#include "services/QWLocalPaths.h"
#include "services/RunningApplicationGuard.h"
#include "services/Runtime.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"

namespace vantory {

namespace {

using namespace std::chrono_literals;

GuardDecision askGuard(const QWApp& app, bool closeAutomatically) {
  RunningApplicationGuard* guard = Runtime::current().guard;
  return guard ? guard->checkRunningAppsForName(app.name(), app.bundleID(), closeAutomatically)
               : GuardDecision::NotRunning;
}

bool close(const QWApp& app) {
  const bool closed = Runtime::current().guard->closeAppWithName(app.name(), app.bundleID());
  QWLog::appendLog(closed ? "App closed successfully" : "Unable to close app");
  return closed;
}

// Returns when what was written to the folder's file system is on disk.
void syncFolder(const std::optional<std::string>& folder) {
  if (!folder || QWFileManager::isMissingAtPath(*folder)) return;
  const Status synced = Runtime::current().platform().files.sync(*folder);
  if (synced) return;
  QWLog::appendLog("The restored files may not be on disk: %@", synced.error().text);
  FailureTally::shared().add();
}

// One run over a backup's applications.
class RestoreRun {
 public:
  RestoreRun(const std::string& backup, bool closeAutomatically)
      : place_(backup), closeAutomatically_(closeAutomatically) {}

  // False when the user cancelled the whole run.
  bool restore(const QWApp& app);
  void makeDurable() const;
  void relaunchClosed() const;

 private:
  void restoreItems(const QWApp& app);

  const BackupFolder place_;
  const bool closeAutomatically_;
  std::vector<std::string> closed_;  // bundle identifiers, in the order they were closed
  bool restoredAny_ = false;
  bool restoredAvidUsers_ = false;  // their files lie outside the home folder
};

bool RestoreRun::restore(const QWApp& app) {
  switch (askGuard(app, closeAutomatically_)) {
    case GuardDecision::Cancel:
      QWLog::appendLog("User cancelled restore");
      return false;
    case GuardDecision::Skip:
      QWLog::appendLog("User chose to skip app");
      return true;
    case GuardDecision::CloseAndRelaunch:
      if (!close(app)) return true;
      closed_.push_back(app.bundleID());
      break;
    case GuardDecision::NotRunning:
      QWLog::appendLog("Application is not running");
      break;
  }
  restoreItems(app);
  return true;
}

void RestoreRun::restoreItems(const QWApp& app) {
  restoredAny_ = true;
  for (const auto& item : app.children()) {
    if (item->selected() == Off) continue;
    restoredAvidUsers_ |= !item->users().empty();
    item->restoreFilesFromBackup(place_);
  }
}

void RestoreRun::makeDurable() const {
  if (restoredAny_) syncFolder(QWLocalPaths::userDirectory());
  if (restoredAvidUsers_) syncFolder(QWLocalPaths::sharedUsersDirectory());
}

void RestoreRun::relaunchClosed() const {
  if (closed_.empty()) return;
  QWLog::appendLog("Relaunching applications...");
  Platform& platform = Runtime::current().platform();
  platform.clock.sleep(1s);
  for (const std::string& bundleID : closed_) {
    if (!platform.workspace.launchApplication(bundleID)) QWLog::appendLog("Couldn't relaunch %@", bundleID);
  }
}

}  // namespace

void QWBackup::restore(bool closeAutomatically) {
  if (std::ranges::all_of(children_, [](const auto& app) { return app->selected() == Off; }))
    QWLog::appendLogAndPrint(
        children_.empty() ? "Nothing was restored: the Settings.plist of %@ is missing, damaged or names no known item."
                          : "Nothing was restored: %@ holds none of the chosen items.",
        path_);
  RestoreRun run(path_, closeAutomatically);
  bool cancelled = false;
  for (const auto& app : children_) {
    if (app->selected() == Off) continue;
    cancelled = !run.restore(*app);
    if (cancelled) break;
  }
  run.makeDurable();
  if (!cancelled) run.relaunchClosed();
}

}  // namespace vantory
