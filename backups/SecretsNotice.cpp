// Reads the settings of the other backups, only where there is something to tell.
#include "backups/SecretsNotice.h"

#include "backups/BackupNaming.h"
#include "backups/BackupReader.h"
#include "backups/LibraryFolder.h"
#include "base/Format.h"
#include "base/Paths.h"
#include "base/PropertyListBytes.h"
#include "catalog/AppDefinition.h"
#include "platform/FileSystem.h"
#include "services/Runtime.h"
#include "services/TaskReport.h"

namespace vantory {

namespace {

bool holds(const PropertyListDictionary& settings, const std::string& app, const std::string& item) {
  const PropertyList* items = settings.find(app);
  return items && items->asArray() && holdsName(*items->asArray(), item);
}

bool isHeldElsewhere(const std::string& app, const std::string& item, const std::string& backup) {
  const FileSystem& files = Runtime::current().platform().files;
  for (const auto& folder : {libraryFolder(), autosavesFolder()}) {
    const auto entries = folder ? files.list(*folder, Detail::Names) : std::vector<DirectoryEntry>();
    if (!entries) continue;
    for (const DirectoryEntry& entry : *entries) {
      const std::string path = paths::join(*folder, entry.name);
      if (!isBackupName(path) || path == backup) continue;
      const auto bytes = files.read(paths::join(path, kBackupSettingsFile));
      const auto settings = bytes ? parsePropertyList(*bytes) : std::nullopt;
      if (settings && settings->asDictionary() && holds(*settings->asDictionary(), app, item)) return true;
    }
  }
  return false;
}

}  // namespace

void noticeSecrets(const AppList& apps, const PropertyListDictionary& settings, const std::string& backup,
                   TaskReport& report) {
  for (const auto& app : apps) {
    if (!app->defined()) continue;
    for (const AppDefinition::Item& item : app->defined()->items)
      if (!item.secrets.empty() && holds(settings, app->name(), item.name) &&
          !isHeldElsewhere(app->name(), item.name, backup))
        report.notice(formatted("\"%@\" of %@ may hold %@: whoever can read this backup can read them too.", item.name,
                                app->name(), item.secrets));
  }
}

}  // namespace vantory
