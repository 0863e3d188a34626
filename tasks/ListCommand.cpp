// "-list": the library for scripts, one entry for each backup under its path.

#include <ctime>
#include <iomanip>
#include <locale>
#include <map>
#include <ostream>
#include <sstream>
#include <stdexcept>

#include "backups/QWDataController.h"
#include "base/PropertyList.h"
#include "tasks/Command.h"

namespace vantory {

namespace {

std::locale userTimeLocale() {
  try {
    return std::locale(std::locale::classic(), "", std::locale::time);
  } catch (const std::runtime_error&) {  // the environment names a locale that is not installed
    return std::locale::classic();
  }
}

std::string formattedTime(const std::tm& time, const char* format, const std::locale& locale) {
  std::ostringstream text;
  text.imbue(locale);
  text << std::put_time(&time, format);
  return text.str();
}

// A locale without date and time forms of its own gives "Nov 21, 2026 06:30:00".
std::string mediumDateAndTime(std::optional<Timestamp> date) {
  if (!date) return "";
  const std::time_t seconds = date->seconds;
  std::tm time{};
  if (!localtime_r(&seconds, &time)) return "";
  static const std::locale locale = userTimeLocale();
  std::string text = formattedTime(time, "%x %X", locale);
  const std::locale& classic = std::locale::classic();
  if (text != formattedTime(time, "%x %X", classic)) return text;
  return formattedTime(time, "%b ", classic) + std::to_string(time.tm_mday) + formattedTime(time, ", %Y %T", classic);
}

PropertyListDictionary entryFor(const QWBackup& backup) {
  PropertyListDictionary entry;
  entry.append("date", mediumDateAndTime(backup.date()));
  entry.append("name", backup.name());
  entry.append("path", backup.path());
  return entry;
}

}  // namespace

int listCommand(const CommandContext& context) {
  QWDataController& data = QWDataController::sharedController();
  data.populateApps();
  data.populateBackups();
  std::map<std::string, PropertyListDictionary> entries;
  for (const auto& node : data.backupArray())
    if (const auto backup = std::dynamic_pointer_cast<QWBackup>(node)) entries[backup->path()] = entryFor(*backup);
  PropertyListDictionary listing;
  for (auto& [path, entry] : entries) listing.append(path, std::move(entry));
  context.output << writeTextPropertyList(std::move(listing));
  return 0;
}

}  // namespace vantory
