// Reads the maker-wide settings file.
#include "services/GlobalSettings.h"

#include "base/Paths.h"
#include "base/PropertyListBytes.h"
#include "platform/FileSystem.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"

namespace vantory {

namespace {

// What scripts and other programs of the maker write for "on".
bool isOn(const PropertyList& value) {
  if (const bool* flag = value.asBoolean()) return *flag;
  if (const auto* number = std::get_if<std::int64_t>(&value.content())) return *number == 1;
  if (const auto* number = std::get_if<double>(&value.content())) return *number == 1;
  const std::string* text = value.asString();
  return text && *text == "1";
}

}  // namespace

// Read each time: other programs of the maker change it.
std::optional<PropertyList> globalSetting(const std::string& key) {
  const auto folder = QWLocalPaths::prefsDirectory(true);
  if (!folder) return std::nullopt;
  const auto bytes = Runtime::current().platform().files.read(paths::join(*folder, "com.quarrywell.global.plist"));
  if (!bytes) return std::nullopt;
  const auto content = parsePropertyList(*bytes);
  const PropertyListDictionary* switches = content ? content->asDictionary() : nullptr;
  const PropertyList* value = switches ? switches->find(key) : nullptr;
  if (!value) return std::nullopt;
  return *value;
}

bool globalSwitch(const std::string& key) {
  const auto value = globalSetting(key);
  return value && isOn(*value);
}

}  // namespace vantory
