// One run over the applications of a backup that is restored.
#pragma once

#include <functional>

#include "backups/ClosedApplications.h"

namespace vantory {

class QWApp;
class TaskReport;

class RestoreRun {
 public:
  // The report outlives it.
  RestoreRun(bool closeAutomatically, TaskReport& report) : closeAutomatically_(closeAutomatically), report_(report) {}

  // Makes way for the files of an application and has them restored, unless it is to be passed over. False when the
  // user cancelled the whole run.
  bool restore(const QWApp& app, const std::function<void()>& restoreFiles);
  // Returns when what was restored is on disk, and what was closed runs again unless the run was cancelled.
  void finish();

 private:
  void makeDurable() const;

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
  bool cancelled_ = false;
};

}  // namespace vantory
