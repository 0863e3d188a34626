// "--list-backups": the library, automatic backups included.

#include <ostream>

#include "backups/BackupAge.h"
#include "backups/QWDataController.h"
#include "base/Json.h"
#include "base/Text.h"
#include "base/TextTable.h"
#include "base/Timestamp.h"
#include "services/files/QWFileManager.h"
#include "tasks/DryRun.h"
#include "tasks/NamedBackup.h"
#include "tasks/Question.h"
#include "tasks/Refusal.h"

namespace vantory {

namespace {

PropertyListArray itemsOf(const QWBackup& backup) {
  PropertyListArray items;
  for (const auto& app : backup.children())
    for (const auto& item : app->children()) {
      PropertyListDictionary entry;
      entry.append("application", app->name());
      entry.append("key", item->key());
      entry.append("name", item->name());
      items.push_back(std::move(entry));
    }
  return items;
}

// `path` is where the backup lies on disk; listing it may have moved its record.
PropertyListDictionary entryFor(const QWBackup& backup, const std::string& path) {
  PropertyListArray projects;
  for (const std::string& project : backup.projects()) projects.push_back(project);
  PropertyListDictionary entry;
  entry.append("name", backup.name());
  entry.append("path", path);
  if (const auto date = backup.date()) entry.append("date", *date);
  entry.append("size", backup.size());
  entry.append("default", backup.isDefault());
  entry.append("automatic", backup.isAutosave());
  entry.append("complete", backup.isComplete());
  if (backup.readError()) entry.append("error", backup.readError()->text);
  entry.append("items", itemsOf(backup));
  entry.append("projects", std::move(projects));
  if (backup.unknown().empty()) return entry;
  PropertyListArray unknown;
  for (const UnknownPart& part : backup.unknown()) unknown.push_back(part.name);
  entry.append("unknown", std::move(unknown));
  return entry;
}

std::string json(const BackupList& backups, const DryRun& run) {
  PropertyListArray entries;
  for (const auto& backup : backups) entries.push_back(entryFor(*backup, run.placeOnDisk(backup->path())));
  PropertyListDictionary listing;
  listing.append("backups", std::move(entries));
  const BackupAge age = ageOf(backups);
  if (age.lastGood) listing.append("lastGood", run.placeOnDisk(age.lastGood->path()));
  if (age.overdue) listing.append("overdue", *age.overdue);
  return writeJson(std::move(listing)) + "\n";
}

std::string keysOf(const QWApp& app) {
  std::string keys;
  for (const auto& item : app.children()) keys.append(keys.empty() ? "" : ",").append(item->key());
  return keys;
}

// The backup's own line, and below its path one for each application and each project.
void addRows(TextTable& table, const QWBackup& backup, const std::string& path) {
  const auto date = backup.date();
  std::string kind = backup.isAutosave() ? "automatic" : "manual";
  if (backup.isDefault()) kind += ", default";
  if (!backup.isComplete()) kind += ", " + backup.flaw();
  table.add({backup.name(), date ? localTimeText(*date, "%Y-%m-%d %H:%M:%S") : "-",
             QWFileManager::formatFileSize(static_cast<double>(backup.size())), kind, path});
  const auto addBelow = [&table](std::string text) { table.add({"", "", "", "", std::move(text)}); };
  if (backup.readError()) addBelow(backup.readError()->text);
  for (const auto& app : backup.children()) addBelow(app->name() + ": " + keysOf(*app));
  for (const UnknownPart& part : backup.unknown()) addBelow(part.name + ": " + part.reason);
  for (const std::string& project : backup.projects()) addBelow("Project: " + project);
}

std::string table(const BackupList& backups, const DryRun& run) {
  TextTable table({"NAME", "DATE", "SIZE", "KIND", "PATH, ITEMS AND PROJECTS"});
  for (const auto& backup : backups) addRows(table, *backup, run.placeOnDisk(backup->path()));
  return table.text();
}

// Beside the table, which scripts may read.
void tellAge(const BackupAge& age, std::ostream& errors) {
  errors << "Vantory: " << printable(age.text) << '\n';
  if (age.overdue) errors << "Vantory: " << printable(*age.overdue) << '\n';
}

// Each ended by a zero byte: a path may hold anything else.
std::string placesOnDisk(const BackupList& backups, const DryRun& run) {
  std::string text;
  for (const auto& backup : backups) text.append(run.placeOnDisk(backup->path())).append(1, '\0');
  return text;
}

}  // namespace

int listBackups(const QuestionContext& context) {
  DryRun run({"vantory"}, context.errors);
  if (const Status begun = run.begin(true); !begun) return refuseToldQuestion(begun.error().text, context);
  QWDataController& data = QWDataController::sharedController();
  data.populateApps();
  data.populateBackups();
  const BackupList backups = sortedBackups();
  switch (context.form) {
    case AnswerForm::Table:
      context.output << table(backups, run);
      tellAge(ageOf(backups), context.errors);
      break;
    case AnswerForm::Json:
      context.output << json(backups, run);
      break;
    case AnswerForm::Names:
      context.output << placesOnDisk(backups, run);
      break;
  }
  // Backups that cannot be read are not none.
  return data.libraryError() ? 1 : 0;
}

}  // namespace vantory
