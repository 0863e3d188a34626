// "-list": the library for scripts, one entry for each backup under its path.

#include <map>
#include <ostream>
#include <stdexcept>

#include "backups/LibraryFolder.h"
#include "backups/QWDataController.h"
#include "base/LocaleDate.h"
#include "base/PropertyListBytes.h"
#include "services/TaskReport.h"
#include "tasks/TaskCommand.h"

namespace vantory {

namespace {

// Only the dates follow the person's language; the rest is for scripts.
std::locale userTimeLocale() {
  try {
    return std::locale(std::locale::classic(), "", std::locale::time);
  } catch (const std::runtime_error&) {  // the environment names a locale that is not installed
    return std::locale::classic();
  }
}

// A backup without a date has an empty one: scripts look for the key.
PropertyListDictionary entryFor(const QWBackup& backup) {
  static const MediumDateAndTime dates(userTimeLocale());
  const auto date = backup.date();
  PropertyListDictionary entry;
  entry.append("date", date ? dates.text(*date) : "");
  entry.append("name", backup.name());
  entry.append("path", backup.path());
  return entry;
}

}  // namespace

int listCommand(const CommandContext& context) {
  QWDataController& data = QWDataController::sharedController();
  data.populateApps();
  data.populateBackups();
  if (const auto error = data.libraryError())
    context.report.failed(FileAction::List, libraryFolder().value_or(""), *error);
  std::map<std::string, PropertyListDictionary> entries;
  for (const auto& node : data.backupArray())
    if (const auto backup = std::dynamic_pointer_cast<QWBackup>(node)) entries[backup->path()] = entryFor(*backup);
  PropertyListDictionary listing;
  for (auto& [path, entry] : entries) listing.append(path, std::move(entry));
  context.output << writeTextPropertyList(std::move(listing));
  return 0;
}

}  // namespace vantory
