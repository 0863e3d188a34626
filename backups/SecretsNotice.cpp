// Reads the settings of the other backups, only where there is something to tell.
#include "backups/SecretsNotice.h"

#include <utility>
#include <vector>

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

// Of which application, and which of its items.
using Secret = std::pair<std::string, const AppDefinition::Item*>;

std::vector<Secret> secretsIn(const AppList& apps, const PropertyListDictionary& settings) {
  std::vector<Secret> secrets;
  for (const auto& app : apps) {
    if (!app->defined()) continue;
    for (const AppDefinition::Item& item : app->defined()->items)
      if (!item.secrets.empty() && holds(settings, app->name(), item.name)) secrets.emplace_back(app->name(), &item);
  }
  return secrets;
}

// The other backups are read as long as there is anything to look for.
void dropHeldElsewhere(std::vector<Secret>& secrets, const std::string& backup) {
  if (secrets.empty()) return;
  for (const std::string& path : pathsOfBackups()) {
    if (path == backup) continue;
    const auto bytes = Runtime::current().platform().files.read(paths::join(path, kBackupSettingsFile));
    const auto settings = bytes ? parsePropertyList(*bytes) : std::nullopt;
    if (!settings || !settings->asDictionary()) continue;
    std::erase_if(secrets, [&](const Secret& secret) {
      return holds(*settings->asDictionary(), secret.first, secret.second->name);
    });
    if (secrets.empty()) return;
  }
}

}  // namespace

void noticeSecrets(const AppList& apps, const PropertyListDictionary& settings, const std::string& backup,
                   TaskReport& report) {
  std::vector<Secret> secrets = secretsIn(apps, settings);
  dropHeldElsewhere(secrets, backup);
  for (const auto& [app, item] : secrets)
    report.notice(formatted("\"%@\" of %@ may hold %@: whoever can read this backup can read them too.", item->name,
                            app, item->secrets));
}

}  // namespace vantory
