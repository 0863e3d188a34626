// The trashing of preferences: what the window's button and "-trash" have in common.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "backups/ClosedApplications.h"
#include "catalog/QWApp.h"

namespace vantory {

class TaskReport;

// Hears how far a run is. By default nobody listens, and nobody cancels.
class TrashObserver {
 public:
  virtual ~TrashObserver() = default;

  // Asked before each step and after the last; true ends the run.
  virtual bool isCancelled() const { return false; }
  // An application was asked to quit, which may have a question of its own; empty when that is over.
  virtual void waitingFor(const std::string& /*name*/) {}
  // A step was not passed over.
  virtual void stepDone() {}
  // All steps are through, and so many files in the Trash.
  virtual void trashed(int /*count*/) {}
  virtual void restoringDefault() {}
  // What was closed is to be started again, where anything was.
  virtual void finishing() {}
  // Applications are about to start.
  virtual void relaunching() {}
};

// Files that go to the Trash together.
struct TrashStep {
  std::shared_ptr<QWApp> app;  // closed first where it runs, if the person wants that; null where nobody is asked
  QWApp::Items items;          // may be empty
};

// One run: the steps in turn, then the default backup is restored where the settings say so, then the applications that
// were closed are started again.
class TrashRun {
 public:
  // Both outlive it.
  TrashRun(TaskReport& report, TrashObserver& observer) : report_(report), observer_(observer) {}

  // False when the person ended the run: then nothing is restored or started again. Blocks until all is done.
  bool run(const std::vector<TrashStep>& steps);
  // How many files are in the Trash now.
  int count() const { return count_; }
  // Whether all that there was went there, whatever became of the default backup.
  bool trashedAll() const { return trashedAll_; }

 private:
  bool isCancelled();
  bool take(const TrashStep& step);
  void restoreDefault();

  TaskReport& report_;
  TrashObserver& observer_;
  ClosedApplications applications_{{.skipped = "User chose to skip app",
                                    .toClose = "User chose to close and relaunch app",
                                    .closed = "Application closed successfully",
                                    .notClosed = "Unable to close application",
                                    .notRunning = nullptr},
                                   report_,
                                   [this] { return observer_.isCancelled(); },
                                   [this](const std::string& name) { observer_.waitingFor(name); }};
  int count_ = 0;
  bool trashedAll_ = false;
};

}  // namespace vantory
