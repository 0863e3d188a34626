// "--check-catalog": whether catalog files may stand, and what their items are here.

#include <optional>
#include <ostream>

#include "backups/LibraryFolder.h"
#include "base/Format.h"
#include "base/Json.h"
#include "base/Paths.h"
#include "base/Text.h"
#include "catalog/definitions/DefinitionFiles.h"
#include "platform/FileSystem.h"
#include "platform/SystemInfo.h"
#include "platform/TrustedFiles.h"
#include "services/Runtime.h"
#include "services/TaskReport.h"
#include "tasks/DryRun.h"
#include "tasks/ItemListing.h"
#include "tasks/Question.h"
#include "tasks/Refusal.h"

namespace vantory {

namespace {

struct CheckedFile {
  std::string path;
  std::string complaint = {};             // empty for a sound file
  std::vector<std::string> remarks = {};  // on what means nothing
  std::shared_ptr<QWApp> app = nullptr;   // of a sound file
};

// A start leaves out what this finds, whatever is in it. Where the file's folder is none that counts, the file is
// judged when it has been copied.
void remarkOnFile(CheckedFile& file) {
  const std::string name = paths::lastComponent(file.path);
  if (!name.ends_with(".plist") || name.starts_with('.'))
    file.remarks.push_back(file.path +
                           ": a start reads only files whose names end in \".plist\" and begin with no dot.");
  const auto found = Runtime::current().platform().trustedFiles.read(
      paths::parent(file.path), name, {.files = 200, .bytes = kLargestDefinition}, ownersOfDefinitions());
  if (!found) return;
  for (const TrustedFile& each : *found)
    if (each.path == file.path && !each.bytes)
      file.remarks.push_back(each.bytes.error().text + ". A start leaves it out.");
}

// What its wildcards find and its items do not have.
void remarkOnMatches(CheckedFile& file) {
  TaskReport report;
  for (const auto& item : file.app->children())
    for (const std::string& pattern : item->files()) (void)item->matches(pattern, &report);
  for (const FileReport& found : report.files()) file.remarks.push_back(found.cause->text);
}

// Checks each file beside the installed ones, and those that were named before it.
class CatalogCheck {
 public:
  CheckedFile check(const std::string& path) {
    CheckedFile checked{.path = path};
    const auto bytes = Runtime::current().platform().files.read(path);
    if (!bytes) {
      checked.complaint = bytes.error().text;
      return checked;
    }
    const auto read = readDefinitionFile(path, *bytes, rules_, checked.remarks);
    if (const auto* fault = std::get_if<std::string>(&read)) {
      checked.complaint = *fault;
      return checked;
    }
    const auto& definition = std::get<AppDefinition>(read);
    if (const DefinitionFault fault = faultBesideOthers(definition); !fault.reason.empty()) {
      checked.complaint = complaintAbout(path, *bytes, fault);
      return checked;
    }
    earlier_.take(definition);
    checked.app = definedApp(definition, rules_);
    remarkOnMatches(checked);
    remarkOnTwins(definition, checked);
    remarkOnFile(checked);
    return checked;
  }

 private:
  void remarkOnTwins(const AppDefinition& definition, CheckedFile& file) const {
    std::vector<std::string> hidden;  // where it is put in a later folder
    for (const auto& app : installed_) {
      const std::string& other = app->defined()->source;
      if (!shareIdentifier(*app->defined(), definition) || other == file.path) continue;
      if (paths::parent(other) != paths::parent(file.path))
        hidden.push_back(other);
      else
        file.remarks.push_back(
            formatted("%@ defines the same application: of two in one folder a start leaves the "
                      "second by name out.",
                      other));
    }
    if (hidden.size() > 1) file.remarks.push_back(remarkOnTakenPlaces(hidden));
  }

  // An installed file of the same application is one that this file would hide, or this file itself.
  DefinitionFault faultBesideOthers(const AppDefinition& definition) const {
    TakenNames installed;
    for (const auto& app : installed_)
      if (!shareIdentifier(*app->defined(), definition)) installed.take(*app->defined());
    const DefinitionFault fault = installed.faultOf(definition);
    return fault.reason.empty() ? earlier_.faultOf(definition) : fault;
  }

  const PatternRules rules_{foldersOfBackups()};
  const AppList installed_ = readDefinedCatalog(foldersOfBackups()).apps;
  TakenNames earlier_;
};

PropertyListDictionary entryFor(const CheckedFile& file) {
  PropertyListArray remarks{file.remarks.begin(), file.remarks.end()};
  PropertyListDictionary entry;
  entry.append("path", file.path);
  if (!file.app) {
    entry.append("fault", file.complaint);
    return entry;
  }
  entry.append("name", file.app->name());
  entry.append("remarks", std::move(remarks));
  entry.append("items", itemEntries(*file.app));
  return entry;
}

void tell(const CheckedFile& file, const QuestionContext& context) {
  for (const std::string& remark : file.remarks) context.errors << "Vantory: " << printable(remark) << '\n';
  if (!file.app)
    context.errors << "Vantory: " << printable(file.complaint) << '\n';
  else if (context.form == AnswerForm::Table)
    context.output << printable(formatted("%@: a sound definition of %@.", file.path, file.app->name())) << '\n'
                   << itemTable({file.app}) << '\n';
}

}  // namespace

int checkCatalog(const QuestionContext& context) {
  const SystemInfo& system = Runtime::current().platform().system;
  if (context.operands.empty())
    return refuseLine("--check-catalog needs the path of a catalog file.", system.arguments(), context.output,
                      context.errors);
  DryRun run({"vantory"}, context.errors);
  if (const Status begun = run.begin(false); !begun) return refuseToldQuestion(begun.error().text, context);
  CatalogCheck check;
  PropertyListArray entries;
  bool areSound = true;
  for (const std::string& operand : context.operands) {
    const CheckedFile file = check.check(paths::absolute(operand, system.workingDirectory()));
    areSound = areSound && file.app;
    tell(file, context);
    entries.push_back(entryFor(file));
  }
  if (context.form == AnswerForm::Json) {
    PropertyListDictionary answer;
    answer.append("files", std::move(entries));
    context.output << writeJson(std::move(answer)) << '\n';
  }
  return areSound ? 0 : 1;
}

}  // namespace vantory
