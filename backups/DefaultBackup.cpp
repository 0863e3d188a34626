// Finds the default backup by the name in the settings, and changes that.
#include "backups/DefaultBackup.h"

#include "backups/BackupNaming.h"
#include "backups/LibraryFolder.h"
#include "backups/QWBackup.h"
#include "backups/QWDataController.h"
#include "base/Format.h"
#include "base/Paths.h"
#include "base/PropertyList.h"
#include "services/QWCmdUtils.h"
#include "services/TaskReport.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"
#include "services/settings/QWUserDefaults.h"
#include "services/settings/SettingsKeys.h"

namespace vantory {

std::string placeOfDefault() {
  const auto name = QWBackup::defaultBackupName();
  const auto library = libraryFolder(), automatic = autosavesFolder();
  if (!name || !library || paths::lastComponent(*name) != *name || !isBackupName(*name)) return library.value_or("");
  std::string path = paths::join(*library, *name);
  if (!automatic || !QWFileManager::isMissingAtPath(path)) return path;
  const std::string other = paths::join(*automatic, *name);
  return QWFileManager::isMissingAtPath(other) ? path : other;
}

bool wouldInheritDefault(const std::string& place) {
  return QWBackup::defaultBackupName() == paths::lastComponent(place) &&
         QWFileManager::isMissingAtPath(placeOfDefault());
}

void remarkOnNamedDefault(TaskReport& report) {
  const auto name = QWBackup::defaultBackupName();
  if (!name) return;
  const QWDataController& data = QWDataController::sharedController();
  if (const auto error = data.libraryError()) return report.remark(error->text);
  if (const auto missing = missingLibraryInWords()) return report.remark(*missing);
  bool isThere = false;
  for (const auto& backup : data.allBackups()) {
    if (name != paths::lastComponent(backup->path())) continue;
    isThere = true;
    if (!backup->isComplete()) report.remark(formatted("The default backup %@.", backup->flawInWords()));
  }
  const char* cure =
      QWCmdUtils::sharedController().hasGUI() ? "choose Set as Default Backup" : "vantory --default NAME";
  if (!isThere)
    report.remark(formatted("The default backup, \"%@\", is not in the library any more. To choose another: %@",
                            backupName(*name), cure));
}

void noteInheritedDefault(const std::string& place, TaskReport& report) {
  const char* cure = QWCmdUtils::sharedController().hasGUI() ? "choose Unset Default Backup" : "vantory --default none";
  report.notice(
      formatted("\"%@\" is the default backup now: that is known by its name, and the one before has gone. "
                "If this is not meant: %@.",
                backupName(place), cure));
  QWLog::appendLog("%@", report.notices().back());
}

Status setPlaceOfDefault(const std::string& place, TaskReport& report) {
  const std::string earlier = placeOfDefault();
  if (place != earlier) report.planned(FileAction::Default, {{.path = place, .place = earlier}});
  QWUserDefaults& settings = QWUserDefaults::standardUserDefaults();
  Status changed = isBackupName(place)
                       ? settings.setObject(setting::kDefaultBackup, textValue(paths::lastComponent(place)))
                       : settings.removeObjectForKey(setting::kDefaultBackup);
  if (changed && place != earlier) report.noted(FileAction::Default, place, {}, earlier);
  return changed;
}

}  // namespace vantory
