// How automatic backups are put together, named and written.
#include "backups/BackupLibrary.h"
#include "backups/BackupNaming.h"
#include "backups/LibraryFolder.h"
#include "backups/QWBackup.h"
#include "base/Paths.h"
#include "base/Timestamp.h"
#include "platform/Clock.h"
#include "services/Runtime.h"
#include "services/TaskReport.h"
#include "services/log/QWLog.h"

namespace vantory {

namespace {

std::string nameOf(Timestamp time) {
  return std::string(kAutomaticPrefix) + localTimeText(time, "%Y-%m-%d_%H_%M_%S");
}

}  // namespace

std::shared_ptr<QWBackup> QWBackup::autoBackup(bool preferencesOnly) {
  const std::string name = nameOf(Runtime::current().platform().clock.now());
  const auto folder = autosavesFolder();
  auto backup = backupWithName(name, folder ? paths::join(*folder, backupFileName(name)) : std::string());
  backup->setIsAutosave(true);
  backup->isNamedByTheClock_ = true;
  const auto copied = [&](const QWPrefItem& item) {
    return preferencesOnly && !item.isPreferences() ? nullptr : item.copy();
  };
  for (const auto& app : BackupLibrary::current().appArray()) backup->addApp(app->copyWithItems(copied));
  return backup;
}

void QWBackup::takeNextSecond() {
  Clock& clock = Runtime::current().platform().clock;
  clock.sleep(std::chrono::microseconds((1'000'000'999 - clock.now().nanoseconds) / 1000));
  setName(nameOf(clock.now()));
  setPath(paths::join(paths::parent(path_), backupFileName(name_)));
  QWLog::appendLog("Another automatic backup was made in the same second; this one becomes %@", path_);
}

WriteResult QWBackup::writeAutoBackup(TaskReport& task, bool preferencesOnly) {
  const auto backup = autoBackup(preferencesOnly);
  TaskReport report;
  const WriteResult result = backup->writeData(report);
  if (result == WriteResult::Success) {
    QWLog::appendLog("Backup successful.");
    for (const std::string& notice : report.notices()) task.notice(notice);
  } else {
    QWLog::appendLog("Backup failed with error code %i.", static_cast<int>(result));
    backup->dropUnwritten(report);
  }
  if (report.hasFailures())
    task.remark(formatted(result == WriteResult::Success ? "The automatic backup made before is incomplete. %@"
                                                         : "No automatic backup could be made before. %@",
                          report.causes()));
  return result;
}

}  // namespace vantory
