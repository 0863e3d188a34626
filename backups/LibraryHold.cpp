// Takes hold of folders, and clears a path for a new backup.
#include "backups/LibraryHold.h"

#include "services/Runtime.h"
#include "services/TaskReport.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"

namespace vantory {

using namespace std::chrono_literals;

Result<std::unique_ptr<FolderHold>> holdBackupFolder(const std::string& folder) {
  return Runtime::current().platform().files.holdFolder(folder, 2s);
}

Result<std::string> clearBackupPath(const std::string& path) {
  if (QWFileManager::isMissingAtPath(path)) return std::string();
  const auto hold = holdBackupFolder(path);
  // What cannot be held, such as a file, nobody writes into.
  if (!hold && hold.error().code == std::errc::timed_out) {
    QWLog::appendLog("Another process is working on %@: %@", path, hold.error().text);
    return hold.error();
  }
  auto place = QWFileManager::trashFile(path, 10s);
  if (place || QWFileManager::isMissingAtPath(path)) return place ? place : std::string();
  QWLog::appendLog("%@ could not be moved to the Trash and is left as it was", path);
  return place.error();
}

void noteCleared(const std::string& path, const std::string& place, TaskReport& report) {
  if (place.empty()) return;
  QWLog::appendLog("What was %@ is in the Trash now: %@", path, place);
  report.done(FileAction::Trash, path, {}, place);
}

}  // namespace vantory
