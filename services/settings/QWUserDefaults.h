// The program's settings.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "base/PropertyList.h"
#include "services/settings/SettingsFile.h"

namespace vantory {

// The settings of the user whose files are handled, in one property list; below them the machine-wide values and the
// registered defaults. Keys that the program does not know and other processes' changes stay. Any thread.
class QWUserDefaults {
 public:
  static QWUserDefaults& standardUserDefaults();

  static constexpr const char* kDomain = "com.quarrywell.Vantory";

  QWUserDefaults();

  // Where the settings lie, the user's or the machine's; none when there is no such user.
  static std::optional<std::string> settingsPath(bool user);

  // None when the key is neither set nor registered.
  std::optional<PropertyList> objectForKey(const std::string& key) const;
  // None when absent or no text.
  std::optional<std::string> stringForKey(const std::string& key) const;
  // Text that begins with a number counts as it; for any other value that is no number the registered one counts. 0
  // when there is neither.
  long long integerForKey(const std::string& key) const;
  // False when absent; a number is true unless it is 0, a text when it begins with a number but 0, "y" or "t".
  bool boolForKey(const std::string& key) const;

  // False while settings are there that cannot be read or understood: what a person has set is not known then.
  bool areKnown() const;

  // Success is on the disk. Where the settings could not be written, which is in the log, the old ones are untouched.
  Status setObject(const std::string& key, PropertyList value);
  Status removeObjectForKey(const std::string& key);
  // Values for keys that nobody set. Never written.
  void registerDefaults(const std::map<std::string, PropertyList>& defaults);

 private:
  std::optional<PropertyList> registeredDefault(const std::string& key) const;
  Status change(const std::function<void(PropertyListDictionary&)>& change);

  std::unique_ptr<SettingsFile> user_;     // null when nobody is at the console
  std::unique_ptr<SettingsFile> machine_;  // null when the machine has no such folder
  mutable std::mutex mutex_;
  std::map<std::string, PropertyList> registered_;
};

}  // namespace vantory
