// "--list-items": the catalog, and which of its files are there.

#include <ostream>

#include "backups/QWDataController.h"
#include "base/Json.h"
#include "base/TextTable.h"
#include "catalog/AppDefinition.h"
#include "tasks/DryRun.h"
#include "tasks/ItemListing.h"
#include "tasks/Question.h"
#include "tasks/Refusal.h"

namespace vantory {

namespace {

std::string json(const AppList& apps) {
  PropertyListArray applications;
  for (const auto& app : apps) {
    PropertyListDictionary application;
    application.append("name", app->name());
    application.append("identifier", app->bundleID());
    if (app->defined()) application.append("definition", app->defined()->source);
    application.append("items", itemEntries(*app));
    applications.push_back(std::move(application));
  }
  PropertyListDictionary listing;
  listing.append("applications", std::move(applications));
  return writeJson(std::move(listing)) + "\n";
}

// An answer about the built-in applications alone has no such part.
std::string sources(const AppList& apps) {
  TextTable table({"APPLICATION", "DEFINED IN"});
  bool any = false;
  for (const auto& app : apps) {
    if (!app->defined()) continue;
    table.add({app->name(), app->defined()->source});
    any = true;
  }
  return any ? "\n" + table.text() : "";
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
  if (const Status begun = run.begin(false); !begun) return refuseToldQuestion(begun.error().text, context);
  QWDataController& data = QWDataController::sharedController();
  data.populateApps();
  const AppList apps = data.appArray();
  switch (context.form) {
    case AnswerForm::Table:
      context.output << itemTable(apps) << sources(apps);
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
