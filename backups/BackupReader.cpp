// Builds the record of a backup from its settings file and the catalog.
#include "backups/BackupReader.h"

#include <algorithm>
#include <map>
#include <span>

#include "backups/BackupFolder.h"
#include "backups/BackupLibrary.h"
#include "backups/BackupNaming.h"
#include "backups/LibraryFolder.h"
#include "base/Paths.h"
#include "base/PropertyListBytes.h"
#include "catalog/definitions/DefinitionFiles.h"
#include "platform/FileSystem.h"
#include "platform/Users.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"
#include "services/log/QWLog.h"

namespace vantory {

namespace {

FileSystem& files() {
  return Runtime::current().platform().files;
}

// A dictionary; none when there is no readable one. The record is told what keeps the file from being read.
std::optional<PropertyList> readSettings(QWBackup& backup) {
  const auto bytes = files().read(paths::join(backup.path(), kBackupSettingsFile));
  if (!bytes && !meansMissing(bytes.error())) backup.setReadError(bytes.error());
  auto settings = bytes ? parsePropertyList(*bytes) : std::nullopt;
  if (settings && !settings->asDictionary()) settings.reset();
  return settings;
}

constexpr const char* kNotDefined = "no definition of it is known here";

bool hasItem(const QWApp& app, const std::string& name) {
  return std::ranges::any_of(app.children(), [&](const auto& item) { return item->name() == name; });
}

// Null where the key is missing or has another type of value.
const PropertyListArray* arrayIn(const PropertyListDictionary& settings, const std::string& key) {
  const PropertyList* value = settings.find(key);
  return value ? value->asArray() : nullptr;
}

// The application as the backup holds it; null when it holds none of its items.
std::shared_ptr<QWApp> heldApp(const QWApp& app, const PropertyListArray& itemNames,
                               const std::shared_ptr<const BackupFolder>& place) {
  const auto held = app.copyWithoutChildren();
  QWApp::Items items;
  items.reserve(app.children().size());
  for (const auto& item : app.children()) {
    if (!holdsName(itemNames, item->name())) continue;
    const auto copy = item->copy();
    copy->setSelected(On);
    copy->setParent(held);
    // Which users a backup holds is told by its folders, not by its settings.
    if (item->hasAvidUsers()) copy->populateAvidUsersInBackup(place->path());
    copy->measureWhenAsked(place);
    items.push_back(copy);
  }
  if (items.empty()) return nullptr;
  held->setChildren(std::move(items));
  held->updateSelectionStatus();
  return held;
}

// The definitions that a backup carries.
struct Carried {
  AppList apps;
  std::map<std::string, UnknownPart> refused;  // by the name of the application
};

std::string textIn(const PropertyList& definition, const char* key) {
  const PropertyListDictionary* entries = definition.asDictionary();
  const PropertyList* value = entries ? entries->find(key) : nullptr;
  const std::string* text = value ? value->asString() : nullptr;
  return text ? *text : "";
}

void refuse(Carried& carried, const PropertyList& definition, std::string reason) {
  UnknownPart part{.name = textIn(definition, "name"), .reason = std::move(reason)};
  const PropertyListArray* items = definition.asDictionary() ? arrayIn(*definition.asDictionary(), "items") : nullptr;
  for (const PropertyList& item : items ? *items : PropertyListArray()) part.keys.push_back(textIn(item, "key"));
  carried.refused[part.name] = std::move(part);
}

std::string withoutPeriod(std::string sentence) {
  if (sentence.ends_with('.')) sentence.pop_back();
  return sentence;
}

// Whether the definition takes another application's place, which the catalog defines, or names what that has: a key
// would restore other files than whoever gives it means. The same application, known by its name, may have other files
// here, and other keys.
DefinitionFault faultBesideInstalled(const AppDefinition& definition, const AppList& catalog,
                                     const TakenNames& installed) {
  for (const auto& app : catalog)
    if (app->defined() && app->name() != definition.name && shareIdentifier(*app->defined(), definition))
      return {formatted("It has an identifier of \"%@\": if that is the same application, give it this name in its "
                        "catalog file here.",
                        app->name()),
              {}};
  if (DefinitionFault fault = installed.faultOfKeys(definition, {definition.name}); !fault.reason.empty()) {
    fault.reason += " Change the key there, or, if it is the same application, its name to this one.";
    return fault;
  }
  return installed.faultOfPatterns(definition, {definition.name});
}

std::span<const PropertyList> firstOf(const PropertyListArray& definitions) {
  return std::span(definitions).first(std::min(definitions.size(), kMostDefinitions));
}

// What is wrong with one makes it unknown, as a missing one.
Carried carriedDefinitions(const PropertyListDictionary& settings, const PatternRules& rules, const AppList& catalog,
                           const TakenNames& installed) {
  Carried carried;
  const PropertyListArray* list = arrayIn(settings, kDefinitionsKey);
  if (!list) return carried;
  // What a user's backup says must not guide the superuser's hand.
  if (Runtime::current().platform().users.isSuperuser()) {
    for (const PropertyList& entry : firstOf(*list))
      refuse(carried, entry,
             "for the superuser a definition in a backup does not count, but with --home DIR before the task it does");
    return carried;
  }
  TakenNames taken;
  if (list->size() > kMostDefinitions)
    QWLog::appendLog("The backup carries more than 100 definitions: the rest is passed over");
  for (const PropertyList& entry : firstOf(*list)) {
    const auto read = readDefinition(entry, rules);
    const auto* sound = std::get_if<ReadDefinition>(&read);
    DefinitionFault fault = sound ? taken.faultOf(sound->definition) : std::get<DefinitionFault>(read);
    if (sound && fault.reason.empty()) fault = faultBesideInstalled(sound->definition, catalog, installed);
    if (!fault.reason.empty()) {
      QWLog::appendLog("A definition that the backup carries is passed over: %@", fault.reason);
      refuse(carried, entry, "the definition that the backup carries is refused: " + withoutPeriod(fault.reason));
      continue;
    }
    taken.take(sound->definition);
    carried.apps.push_back(definedApp(sound->definition, rules));
  }
  return carried;
}

// The applications that a backup is compared with: what it says of itself counts for what it holds.
AppList catalogFor(const AppList& catalog, const AppList& carried) {
  AppList apps;
  for (const auto& app : catalog)
    if (std::ranges::none_of(carried, [&](const auto& other) { return other->name() == app->name(); }))
      apps.push_back(app);
  apps.insert(apps.end(), carried.begin(), carried.end());
  return apps;
}

// Applications in the settings that are not among those held, and items that those do not have: whoever wrote the
// backup knew them.
std::vector<UnknownPart> unknownParts(const PropertyListDictionary& settings, const AppList& known,
                                      const std::map<std::string, UnknownPart>& refused) {
  std::vector<UnknownPart> unknown;
  for (const auto& [name, value] : settings.entries()) {
    const PropertyListArray* items = value.asArray();
    if (!items || name == "projects") continue;
    const bool namesItems = std::ranges::all_of(*items, [](const PropertyList& item) { return item.asString(); });
    if (!namesItems || items->empty()) continue;
    const auto app =
        std::ranges::find_if(known, [&application = name](const auto& each) { return each->name() == application; });
    if (app == known.end()) {
      const auto reason = refused.find(name);
      unknown.push_back(reason == refused.end() ? UnknownPart{name, kNotDefined} : reason->second);
      continue;
    }
    for (const PropertyList& item : *items)
      if (!hasItem(**app, *item.asString())) unknown.push_back({name + ": " + *item.asString(), kNotDefined});
  }
  return unknown;
}

// The projects whose opening restores this backup, by their full paths.
std::vector<std::string> linkedProjects(const PropertyListDictionary& settings) {
  std::vector<std::string> projects;
  if (const PropertyListArray* list = arrayIn(settings, "projects"))
    for (const PropertyList& entry : *list)
      if (auto path = textOf(entry)) projects.push_back(std::move(*path));
  if (!projects.empty()) return projects;

  // Older backups name one project only.
  const PropertyList* single = settings.find("projectPath");
  const auto path = single ? textOf(*single) : std::nullopt;
  if (path && !path->empty()) projects.push_back(*path);
  return projects;
}

}  // namespace

bool holdsName(const PropertyListArray& list, const std::string& name) {
  return std::ranges::any_of(list, [&](const PropertyList& entry) {
    const std::string* text = entry.asString();
    return text && *text == name;
  });
}

BackupReader::BackupReader()
    : catalog_(BackupLibrary::current().appArray()),
      home_(QWLocalPaths::userDirectory()),
      defaultName_(QWBackup::defaultBackupName()),
      rules_(foldersOfBackups()) {
  for (const auto& app : catalog_)
    if (app->defined()) installed_.take(*app->defined());
}

// What a catalog file names as well is no invention of the backup's.
void BackupReader::guardAgainst(QWApp& held) const {
  const auto isKnown = [&](const std::string& pattern) {
    return std::ranges::any_of(catalog_, [&](const auto& app) {
      return std::ranges::any_of(app->children(),
                                 [&](const auto& item) { return std::ranges::count(item->files(), pattern) > 0; });
    });
  };
  for (const auto& item : held.children())
    if (!std::ranges::all_of(item->files(), isKnown))
      item->setPlaceRule(
          [rules = rules_, identifiers = held.identifiers()](const auto& path, const auto& found, auto& realPaths) {
            return rules.faultOfPath(path, found, identifiers, realPaths);
          });
}

// In the catalog's order, whatever that of the settings is.
std::shared_ptr<QWBackup> BackupReader::read(const std::string& path, std::optional<Timestamp> date) const {
  const auto backup = std::make_shared<QWBackup>(backupName(path), path, date);
  backup->setIsAutosave(paths::lastComponent(paths::parent(path)) == kAutosavesFolder);

  const auto place = std::make_shared<const BackupFolder>(path, home_);
  const std::optional<PropertyList> content = readSettings(*backup);
  backup->setIsComplete(content.has_value());
  backup->setIsDefault(content && defaultName_ == paths::lastComponent(path));
  if (!content) return backup;
  const PropertyListDictionary& settings = *content->asDictionary();
  AppList held;
  const Carried carried = carriedDefinitions(settings, rules_, catalog_, installed_);
  const AppList ownCatalog = carried.apps.empty() ? AppList() : catalogFor(catalog_, carried.apps);
  const AppList& known = carried.apps.empty() ? catalog_ : ownCatalog;
  for (const auto& app : known) {
    const PropertyListArray* itemNames = arrayIn(settings, app->name());
    if (!itemNames) continue;
    auto copy = heldApp(*app, *itemNames, place);
    if (!copy) continue;
    if (app->defined() && app->defined()->source.empty()) guardAgainst(*copy);
    held.push_back(std::move(copy));
  }
  backup->setUnknown(unknownParts(settings, known, carried.refused));
  backup->setChildren(std::move(held));
  backup->setProjects(linkedProjects(settings));
  return backup;
}

std::shared_ptr<QWBackup> QWBackup::backupWithFile(const std::string& path) {
  const auto info = files().info(path, Links::Follow);
  return BackupReader().read(path, info ? std::optional(info->modified) : std::nullopt);
}

}  // namespace vantory
