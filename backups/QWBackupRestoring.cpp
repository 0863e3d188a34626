// How a backup is restored: application by application, then made durable.
#include <algorithm>
#include <utility>

#include "backups/BackupFolder.h"
#include "backups/QWBackup.h"
#include "backups/RestoreRun.h"
#include "base/Format.h"
#include "services/TaskReport.h"
#include "services/log/QWLog.h"

namespace vantory {

namespace {

bool isWhollySelected(const std::shared_ptr<QWApp>& app) {
  return app->selected() == On &&
         std::ranges::all_of(app->children(), [](const auto& item) { return item->selected() == On; });
}

void passOverUnknown(const QWBackup& backup, TaskReport& report) {
  for (const UnknownPart& part : backup.unknown()) {
    std::string reason = formatted("Files of \"%@\" stay in the backup: %@.", part.name, part.reason);
    QWLog::appendLog("%@", reason);
    report.passedOver(part.name, std::move(reason));
  }
}

}  // namespace

// A mixed item is restored too: which of its users are meant, it knows itself.
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
  // Whoever chose some of it has not asked for the rest.
  if (std::ranges::all_of(children_, isWhollySelected)) passOverUnknown(*this, report);
  const BackupFolder place(path_);
  if (place.holdsOtherFiles()) {
    QWLog::appendLog("%@ holds other files than were backed up", path_);
    report.remark(formatted("\"%@\" holds other files than were backed up. \"vantory --verify\" tells more.", name()));
  }
  RestoreRun run(closeAutomatically, report);
  for (const auto& app : children_) {
    if (app->selected() == Off) continue;
    const bool goOn = run.restore(*app, [&] {
      for (const auto& item : app->children())
        if (item->selected() != Off) item->restoreFilesFromBackup(place, report);
    });
    if (!goOn) break;
  }
  run.finish();
}

}  // namespace vantory
