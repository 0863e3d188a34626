// "--list-items": the catalog, and which of its files are there.

#include <ostream>

#include "backups/QWDataController.h"
#include "base/Json.h"
#include "base/TextTable.h"
#include "services/files/QWFileManager.h"
#include "tasks/DryRun.h"
#include "tasks/Question.h"

namespace vantory {

namespace {

// Of the item's own patterns what is there now.
std::vector<std::string> filesOf(const QWPrefItem& item) {
  std::vector<std::string> files;
  for (const std::string& pattern : item.files())
    for (std::string& path : QWFileManager::filesMatchingWildcardPath(pattern))
      if (QWFileManager::itemExistsAtPath(path)) files.push_back(std::move(path));
  return files;
}

// Only an item that has users has an entry for them.
PropertyListDictionary entryFor(const QWPrefItem& item) {
  PropertyListArray files;
  for (std::string& path : filesOf(item)) files.push_back(std::move(path));
  PropertyListDictionary entry;
  entry.append("key", item.key());
  entry.append("name", item.name());
  entry.append("lockable", item.lockable());
  entry.append("files", std::move(files));
  if (item.users().empty()) return entry;
  PropertyListArray users;
  for (const auto& user : item.users()) users.push_back(entryFor(*user));
  entry.append("users", std::move(users));
  return entry;
}

std::string json(const AppList& apps) {
  PropertyListArray applications;
  for (const auto& app : apps) {
    PropertyListArray items;
    for (const auto& item : app->children()) items.push_back(entryFor(*item));
    PropertyListDictionary application;
    application.append("name", app->name());
    application.append("identifier", app->bundleID());
    application.append("items", std::move(items));
    applications.push_back(std::move(application));
  }
  PropertyListDictionary listing;
  listing.append("applications", std::move(applications));
  return writeJson(std::move(listing)) + "\n";
}

// Each further file of an item has a row of its own.
void addRows(TextTable& table, const QWApp& app, const QWPrefItem& item) {
  const std::vector<std::string> files = filesOf(item);
  table.add({item.key(), app.name(), item.name(), item.lockable() ? "yes" : "no", files.empty() ? "-" : files.front()});
  for (std::size_t i = 1; i < files.size(); ++i) table.add({"", "", "", "", files[i]});
  for (const auto& user : item.users()) addRows(table, app, *user);
}

std::string table(const AppList& apps) {
  TextTable table({"KEY", "APPLICATION", "ITEM", "LOCKABLE", "FILES"});
  for (const auto& app : apps)
    for (const auto& item : app->children()) addRows(table, *app, *item);
  return table.text();
}

// A user's key follows that of its item.
std::string keys(const AppList& apps) {
  std::string text;
  const auto add = [&text](const QWPrefItem& item) { text.append(item.key()).append(1, '\0'); };
  for (const auto& app : apps)
    for (const auto& item : app->children()) {
      add(*item);
      for (const auto& user : item->users()) add(*user);
    }
  return text;
}

}  // namespace

int listItems(const QuestionContext& context) {
  DryRun run({"vantory"}, context.errors);
  if (!run.begin(false)) return 1;
  QWDataController& data = QWDataController::sharedController();
  data.populateApps();
  const AppList apps = data.appArray();
  switch (context.form) {
    case AnswerForm::Table:
      context.output << table(apps);
      break;
    case AnswerForm::Json:
      context.output << json(apps);
      break;
    case AnswerForm::Names:
      context.output << keys(apps);
      break;
  }
  return 0;
}

}  // namespace vantory
