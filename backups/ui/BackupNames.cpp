// Looks for names that are free, and refuses those that mislead.
#include "backups/ui/BackupNames.h"

#include "backups/BackupNaming.h"
#include "backups/QWBackup.h"
#include "backups/QWDataController.h"
#include "base/Format.h"
#include "base/Paths.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"

namespace vantory {

bool refuseNameOfAutomaticBackups(const std::string& name, AlertParent parentWindow) {
  if (!isAutomaticName(name)) return false;
  QWLog::appendLog("The name %@ was refused: it is one of automatic backups", name);
  QWAlert::alertSheetWithMessageText("Please choose another name for this backup",
                                     "Names that begin with \"Auto Backup \" are those of automatic backups.",
                                     parentWindow);
  return true;
}

std::string nameAndDate(const QWBackup& backup) {
  const std::string name = "\"" + backup.name() + "\"";
  return backup.date() ? name + " of " + localTimeText(*backup.date(), "%Y-%m-%d %H:%M:%S") : name;
}

std::string freeNameFor(const QWBackup& backup, const std::string& wanted) {
  const std::string folder = paths::parent(backup.path());
  const auto isTaken = [&folder](const std::string& name) {
    return QWDataController::uniqueBackupName(name) != name ||
           QWFileManager::itemExistsAtPath(paths::join(folder, backupFileName(name)));
  };
  std::string name = wanted;
  for (int number = 2; isTaken(name); ++number) name = formatted("%@-%i", wanted, number);
  return name;
}

}  // namespace vantory
