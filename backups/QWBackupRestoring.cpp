// How a backup is restored: application by application, then made durable.
#include <algorithm>

#include "backups/BackupFolder.h"
#include "backups/ClosedApplications.h"
#include "backups/QWBackup.h"
#include "base/Format.h"
#include "platform/FileSystem.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"
#include "services/TaskReport.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"

namespace vantory {

namespace {

// Returns when what was written to the folder's file system is on disk.
void syncFolder(const std::optional<std::string>& folder, TaskReport& report) {
  if (!folder || QWFileManager::isMissingAtPath(*folder)) return;
  const Status synced = Runtime::current().platform().files.sync(*folder);
  if (synced) return;
  QWLog::appendLog("The restored files may not be on disk: %@", synced.error().text);
  report.failed(FileAction::Sync, *folder, synced.error());
}

// One run over a backup's applications.
class RestoreRun {
 public:
  RestoreRun(const std::string& backup, bool closeAutomatically, TaskReport& report)
      : place_(backup), closeAutomatically_(closeAutomatically), report_(report) {}

  // False when the user cancelled the whole run.
  bool restore(const QWApp& app);
  void makeDurable() const;
  void relaunchClosed();

 private:
  void restoreItems(const QWApp& app);

  const BackupFolder place_;
  const bool closeAutomatically_;
  TaskReport& report_;
  ClosedApplications applications_{{.skipped = "User chose to skip app",
                                    .toClose = nullptr,
                                    .closed = "App closed successfully",
                                    .notClosed = "Unable to close app",
                                    .notRunning = "Application is not running"},
                                   report_};
  bool restoredAny_ = false;
  bool restoredAvidUsers_ = false;  // their files lie outside the home folder
};

bool RestoreRun::restore(const QWApp& app) {
  switch (applications_.makeWay(app, closeAutomatically_)) {
    case ClosedApplications::Answer::Cancel:
      QWLog::appendLog("User cancelled restore");
      return false;
    case ClosedApplications::Answer::Proceed:
      restoreItems(app);
      break;
    case ClosedApplications::Answer::PassOver:
      break;
  }
  return true;
}

// A mixed item is restored too: which of its users are meant, it knows itself.
void RestoreRun::restoreItems(const QWApp& app) {
  restoredAny_ = true;
  for (const auto& item : app.children()) {
    if (item->selected() == Off) continue;
    restoredAvidUsers_ |= !item->users().empty();
    item->restoreFilesFromBackup(place_, report_);
  }
}

// One wait for each place that was written to, instead of one for each file.
void RestoreRun::makeDurable() const {
  if (restoredAny_) syncFolder(QWLocalPaths::userDirectory(), report_);
  if (restoredAvidUsers_) syncFolder(QWLocalPaths::sharedUsersDirectory(), report_);
}

void RestoreRun::relaunchClosed() {
  if (applications_.empty()) return;
  QWLog::appendLog("Relaunching applications...");
  applications_.relaunch();
}

}  // namespace

void QWBackup::restore(TaskReport& report, bool closeAutomatically) {
  if (std::ranges::all_of(children_, [](const auto& app) { return app->selected() == Off; })) {
    const std::string reason =
        readError_
            ? formatted("Nothing was restored: %@", readError_->text)
            : formatted(children_.empty() ? "Nothing was restored: the Settings.plist of %@ is missing, damaged or "
                                            "names no known item."
                                          : "Nothing was restored: %@ holds none of the chosen items.",
                        path_);
    QWLog::appendLog("%@", reason);
    report.remark(reason);
  }
  // Whoever chose some of the applications has not asked for the others.
  if (std::ranges::none_of(children_, [](const auto& app) { return app->selected() == Off; }))
    for (const std::string& name : unknown_)
      report.remark(formatted("No definition of \"%@\" is known: its files stay in the backup.", name));
  RestoreRun run(path_, closeAutomatically, report);
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
