// Stores which items are ticked, and applies it to a new catalog.
#include "catalog/SavedSelections.h"

#include <optional>
#include <string>
#include <unordered_set>

#include "base/PropertyList.h"
#include "services/log/QWLog.h"
#include "services/settings/QWUserDefaults.h"
#include "services/settings/SettingsKeys.h"

namespace vantory {

namespace {

using Keys = std::unordered_set<std::string>;

// Of applications that are not off: the items that are not off, and the users that are on.
PropertyListArray tickedKeys(const AppList& apps) {
  PropertyListArray keys;
  for (const auto& app : apps) {
    if (app->selected() == Off) continue;
    for (const auto& item : app->children()) {
      if (item->selected() != Off) keys.push_back(textValue(item->key()));
      for (const auto& user : item->users())
        if (user->selected() == On) keys.push_back(textValue(user->key()));
    }
  }
  return keys;
}

// None when none were ever saved.
std::optional<Keys> savedKeys() {
  const std::optional<PropertyList> saved =
      QWUserDefaults::standardUserDefaults().objectForKey(setting::kSelectedPrefs);
  const PropertyListArray* list = saved ? saved->asArray() : nullptr;
  if (!list) return std::nullopt;
  Keys keys;
  for (const PropertyList& entry : *list)
    if (std::optional<std::string> key = textOf(entry)) keys.insert(std::move(*key));
  return keys;
}

// Unticks the item and its users where they are not among the keys. True when a user was.
bool untickMissing(QWPrefItem& item, const Keys& keys) {
  if (!keys.contains(item.key())) item.setSelected(Off);
  bool usersChanged = false;
  for (const auto& user : item.users()) {
    if (keys.contains(user->key())) continue;
    user->setSelected(Off);
    item.setSelected(Mixed);
    usersChanged = true;
  }
  return usersChanged;
}

}  // namespace

void saveAppSelections(const AppList& apps) {
  QWLog::appendLog("Saving app selections");
  if (QWUserDefaults::standardUserDefaults().setObject(setting::kSelectedPrefs, tickedKeys(apps)))
    QWLog::appendLog("App selections saved");
}

// New items of the catalog are not among the saved keys, and so begin unticked.
void loadAppSelections(const AppList& apps) {
  QWLog::appendLog("Loading app selections");
  const std::optional<Keys> keys = savedKeys();
  if (!keys) return;
  for (const auto& app : apps) {
    bool usersChanged = false;
    for (const auto& item : app->children()) usersChanged |= untickMissing(*item, *keys);
    if (usersChanged)
      app->updateSelectionStatusForPrefs();
    else
      app->updateSelectionStatus();
  }
  QWLog::appendLog("App selections loaded");
}

}  // namespace vantory
