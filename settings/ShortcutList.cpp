// Reads and changes the shared list.
#include "settings/ShortcutList.h"

#include <limits>

#include "base/Paths.h"
#include "services/QWLocalPaths.h"
#include "services/log/QWLog.h"
#include "services/settings/QWUserDefaults.h"

namespace vantory {

namespace {

constexpr const char* kFileName = "com.quarrywell.shortcutkeys.plist";
constexpr const char* kWatchList = "watchlist";
constexpr const char* kUnreadable = "watchlist-damaged";  // where a watch list is kept that is none

const PropertyList* valueIn(const PropertyList& entry, std::string_view key) {
  const PropertyListDictionary* values = entry.asDictionary();
  return values ? values->find(key) : nullptr;
}

std::string textIn(const PropertyList& entry, std::string_view key) {
  const PropertyList* value = valueIn(entry, key);
  return value ? textOf(*value).value_or("") : "";
}

template <class Number>
// None for what is no whole number, or too large.
std::optional<Number> numberIn(const PropertyList& entry, std::string_view key) {
  const PropertyList* value = valueIn(entry, key);
  const auto* number = value ? std::get_if<std::int64_t>(&value->content()) : nullptr;
  if (!number || *number < 0 || *number > std::numeric_limits<Number>::max()) return std::nullopt;
  return static_cast<Number>(*number);
}

// Other programs of the maker keep their shortcuts in the same list.
bool isOwn(const PropertyList& entry) {
  return textIn(entry, "bundleid") == QWUserDefaults::kDomain;
}

// By the command where the target names one, else by its parameters.
bool calls(const PropertyList& entry, const ShortcutTarget& target) {
  if (target.commandID) return textIn(entry, "commandid") == *target.commandID;
  const PropertyList* params = valueIn(entry, "commandparams");
  return target.params && params && params->asArray() && *params->asArray() == *target.params;
}

// The entries. What stands in their place and is no list is kept under another key.
PropertyListArray takeWatchList(PropertyListDictionary& list) {
  const PropertyList* stored = list.find(kWatchList);
  if (!stored) return {};
  if (const PropertyListArray* entries = stored->asArray()) return *entries;
  QWLog::appendLog("The list of shortcuts is damaged; what stood there is kept as \"%@\".", kUnreadable);
  list.set(kUnreadable, *stored);
  return {};
}

}  // namespace

ShortcutList::ShortcutList() {
  if (const auto folder = QWLocalPaths::prefsDirectory(true))
    file_ = std::make_unique<SettingsFile>(paths::join(*folder, kFileName));
}

std::vector<ShortcutList::Entry> ShortcutList::ownEntries() const {
  std::vector<Entry> own;
  const auto stored = file_ ? file_->find(kWatchList) : std::nullopt;
  const PropertyListArray* entries = stored ? stored->asArray() : nullptr;
  if (!entries) return own;
  for (const PropertyList& entry : *entries) {
    if (!isOwn(entry)) continue;
    own.push_back({textIn(entry, "commandid"), numberIn<std::uint32_t>(entry, "keycode"),
                   numberIn<std::uint16_t>(entry, "modifiers").value_or(0)});
  }
  return own;
}

Status ShortcutList::set(const ShortcutTarget& target, const ShortcutKey& key) {
  PropertyListDictionary entry;
  entry.set("bundleid", QWUserDefaults::kDomain);
  entry.set("keycode", std::int64_t{key.keycode});
  entry.set("modifiers", std::int64_t{key.modifiers()});
  if (target.commandID) entry.set("commandid", textValue(*target.commandID));
  if (target.params) entry.set("commandparams", *target.params);
  return change(target, entry);
}

Status ShortcutList::remove(const ShortcutTarget& target) {
  return change(target, std::nullopt);
}

// The old entry goes and the new one comes in one write.
Status ShortcutList::change(const ShortcutTarget& target, const std::optional<PropertyListDictionary>& replacement) {
  const auto replace = [&](PropertyListDictionary& list) {
    PropertyListArray entries = takeWatchList(list);
    std::erase_if(entries, [&](const PropertyList& entry) { return isOwn(entry) && calls(entry, target); });
    if (replacement) entries.emplace_back(*replacement);
    list.set(kWatchList, std::move(entries));
  };
  if (!file_) return Error{std::errc::no_such_file_or_directory, "Nobody is logged in at the console."};
  return file_->change(replace, SettingsFile::Durability::Lasting);
}

}  // namespace vantory
