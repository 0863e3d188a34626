// Reads settings by layers, and changes the user's own.
#include "services/settings/QWUserDefaults.h"

#include <charconv>
#include <limits>

#include "base/Paths.h"
#include "base/Text.h"
#include "platform/PrivilegedRunner.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"
#include "services/log/QWLog.h"

namespace vantory {

namespace {

using Limits = std::numeric_limits<long long>;

// Null where nobody's folders can be resolved.
std::unique_ptr<SettingsFile> settingsOf(bool user) {
  const auto path = QWUserDefaults::settingsPath(user);
  return path ? std::make_unique<SettingsFile>(*path) : nullptr;
}

// Cut off towards zero; the nearest number for one beyond the range, 0 for what is none.
long long integerOf(double number) {
  if (number != number) return 0;
  if (number >= 0x1p63) return Limits::max();
  if (number < -0x1p63) return Limits::min();
  return static_cast<long long>(number);
}

// The number that the text begins with.
std::optional<long long> integerOf(std::string_view text) {
  text = trimmed(text);
  if (text.starts_with('+')) text.remove_prefix(1);
  long long number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error == std::errc::result_out_of_range) return text.starts_with('-') ? Limits::min() : Limits::max();
  if (error != std::errc()) return std::nullopt;
  return number;
}

// None when the value stands for no number.
std::optional<long long> integerOf(const PropertyList& value) {
  if (const auto* number = std::get_if<std::int64_t>(&value.content())) return *number;
  if (std::holds_alternative<std::uint64_t>(value.content())) return Limits::max();
  if (const auto* number = std::get_if<double>(&value.content())) return integerOf(*number);
  if (const bool* flag = value.asBoolean()) return *flag;
  if (const std::string* text = value.asString()) return integerOf(std::string_view(*text));
  return std::nullopt;
}

// Behind a sign and zeros a text is on when it goes on with another digit, or with the first letter of "yes" or "true".
bool booleanOf(const PropertyList& value) {
  if (const auto* number = std::get_if<double>(&value.content())) return *number != 0;
  const std::string* text = value.asString();
  if (!text) return integerOf(value).value_or(0) != 0;
  std::string_view rest = trimmed(*text);
  if (rest.starts_with('+') || rest.starts_with('-')) rest.remove_prefix(1);
  rest.remove_prefix(std::min(rest.find_first_not_of('0'), rest.size()));
  return !rest.empty() && std::string_view("YyTt123456789").find(rest.front()) != std::string_view::npos;
}

}  // namespace

QWUserDefaults& QWUserDefaults::standardUserDefaults() {
  return Runtime::current().shared<QWUserDefaults>();
}

QWUserDefaults::QWUserDefaults() : user_(settingsOf(true)), machine_(settingsOf(false)) {}

std::optional<std::string> QWUserDefaults::settingsPath(bool user) {
  const auto folder = QWLocalPaths::prefsDirectory(user);
  if (!folder) return std::nullopt;
  return paths::join(*folder, kSettingsFile);
}

// The user's own value, else the machine's, else the registered one.
std::optional<PropertyList> QWUserDefaults::objectForKey(const std::string& key) const {
  for (const SettingsFile* file : {user_.get(), machine_.get()}) {
    if (!file) continue;
    if (auto value = file->find(key)) return value;
  }
  return registeredDefault(key);
}

std::optional<PropertyList> QWUserDefaults::registeredDefault(const std::string& key) const {
  const std::lock_guard lock(mutex_);
  const auto registered = registered_.find(key);
  if (registered == registered_.end()) return std::nullopt;
  return registered->second;
}

std::optional<std::string> QWUserDefaults::stringForKey(const std::string& key) const {
  const auto value = objectForKey(key);
  return value ? textOf(*value) : std::nullopt;
}

bool QWUserDefaults::areKnown() const {
  return (!user_ || user_->isUsable()) && (!machine_ || machine_->isUsable());
}

// A count that somebody has spoilt must not be taken for none: backups beyond it are deleted.
long long QWUserDefaults::integerForKey(const std::string& key) const {
  for (const auto& value : {objectForKey(key), registeredDefault(key)})
    if (const auto number = value ? integerOf(*value) : std::nullopt) return *number;
  return 0;
}

bool QWUserDefaults::boolForKey(const std::string& key) const {
  const auto value = objectForKey(key);
  return value && booleanOf(*value);
}

Status QWUserDefaults::setObject(const std::string& key, PropertyList value) {
  return change([&](PropertyListDictionary& settings) { settings.set(key, std::move(value)); });
}

Status QWUserDefaults::removeObjectForKey(const std::string& key) {
  return change([&](PropertyListDictionary& settings) { settings.remove(key); });
}

Status QWUserDefaults::change(const std::function<void(PropertyListDictionary&)>& change) {
  if (user_) return user_->change(change, SettingsFile::Durability::Lasting);
  const Error nobody = {std::errc::no_such_file_or_directory, "nobody is logged in at the console."};
  QWLog::appendLog("Unable to save the settings: %@", nobody.text);
  return nobody;
}

void QWUserDefaults::registerDefaults(const std::map<std::string, PropertyList>& defaults) {
  const std::lock_guard lock(mutex_);
  for (const auto& [key, value] : defaults) registered_.insert_or_assign(key, value);
}

}  // namespace vantory
