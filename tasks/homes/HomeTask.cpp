// Runs the line, and says in a sentence why it was not done.
#include "tasks/homes/HomeTask.h"

#include <sstream>

#include "backups/LibraryFolder.h"
#include "backups/QWDataController.h"
#include "base/ExitCodes.h"
#include "base/Paths.h"
#include "base/Text.h"
#include "catalog/Catalog.h"
#include "catalog/definitions/DefinitionFiles.h"
#include "services/QWLocalPaths.h"
#include "services/TaskReport.h"
#include "services/files/QWFileManager.h"
#include "tasks/Program.h"
#include "tasks/Question.h"
#include "tasks/TaskOptions.h"

namespace vantory {

namespace {

using Outcome = FileReport::Outcome;

// What somebody who looks after many homes reads first.
std::string whyOf(const TaskReport& report) {
  if (report.refusal()) return *report.refusal();
  for (const FileReport& file : report.files())
    if (file.outcome == Outcome::Failed) return file.cause->text;
  if (!report.passedOver().empty()) return report.passedOver().front().reason;
  for (const FileReport& file : report.files())
    if (file.wasLeftOut()) return file.cause->text;
  if (!report.unusedOperands().empty()) return report.unusedOperands().front().reason;
  if (!report.remarks().empty()) return report.remarks().front();
  std::vector<std::string> said = report.notices();
  const auto complaints = QWDataController::sharedController().complaints();
  said.insert(said.end(), complaints.begin(), complaints.end());
  return joined(said, " ");
}

// The first line of what a person would have read.
std::string firstOf(const std::string& errors) {
  constexpr std::string_view kProgram = "Vantory: ";
  const std::string line = errors.substr(0, errors.find('\n'));
  return line.starts_with(kProgram) ? line.substr(kProgram.size()) : line;
}

}  // namespace

std::vector<std::string> argumentsForEach(std::vector<std::string> arguments) {
  if (!beginsWithQuestion(arguments)) arguments.insert(arguments.begin() + 1, std::string(kStrict));
  return arguments;
}

std::vector<std::string> filesOfCatalog() {
  const std::string home = QWLocalPaths::userDirectory().value_or("");
  AppList apps = buildCatalog();
  const AppList defined = readDefinedCatalog(foldersOfBackups()).apps;
  apps.insert(apps.end(), defined.begin(), defined.end());
  std::vector<std::string> files;
  for (const auto& app : apps)
    for (const auto& item : app->children())
      for (const std::string& pattern : item->files()) {
        if (!paths::isWithin(pattern, home)) continue;
        const auto matching = item->matches(pattern);
        files.insert(files.end(), matching.begin(), matching.end());
      }
  return files;
}

HomeResult runInHome() {
  std::ostringstream output, errors;
  HomeResult result;
  const auto noWindow = [](const std::string& program, const std::vector<std::string>&) -> Status {
    return Error{std::errc::no_such_file_or_directory, program};
  };
  std::string finding;
  const auto heardTask = [&](const TaskReport& report) {
    result.counts = {report.count(Outcome::Done), report.count(Outcome::Skipped), report.count(Outcome::Failed)};
    result.why = whyOf(report);
  };
  const auto heardQuestion = [&](const std::string& sentence) { finding = sentence; };
  result.exitCode = runProgram(output, errors, noWindow, {.task = heardTask, .question = heardQuestion});
  result.output = output.str();
  if (!finding.empty()) {
    result.exitCode = kDoneInPart;
    result.why = finding;
  }
  // What a task that succeeded remarks upon is told too.
  if (result.why.empty()) result.why = firstOf(errors.str());
  if (result.exitCode == kNothingMatched && result.why.empty()) result.why = "There was nothing to do.";
  if (result.exitCode != 0 && result.why.empty()) result.why = "Not all is as it should be: see its answer.";
  return result;
}

}  // namespace vantory
