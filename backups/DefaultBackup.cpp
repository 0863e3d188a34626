// Finds the default backup by the name in the settings, and changes that.
#include "backups/DefaultBackup.h"

#include "backups/BackupNaming.h"
#include "backups/LibraryFolder.h"
#include "backups/QWBackup.h"
#include "base/Paths.h"
#include "base/PropertyList.h"
#include "services/TaskReport.h"
#include "services/files/QWFileManager.h"
#include "services/settings/QWUserDefaults.h"
#include "services/settings/SettingsKeys.h"

namespace vantory {

std::string placeOfDefault() {
  const auto name = QWBackup::defaultBackupName();
  for (const auto& folder : {libraryFolder(), autosavesFolder()})
    if (name && folder && paths::lastComponent(*name) == *name && isBackupName(*name))
      if (std::string path = paths::join(*folder, *name); !QWFileManager::isMissingAtPath(path)) return path;
  return libraryFolder().value_or("");
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
