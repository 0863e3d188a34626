// "--self-check": whether the system does what the program builds on.

#include <algorithm>
#include <filesystem>
#include <ostream>
#include <system_error>

#include "base/Format.h"
#include "base/Json.h"
#include "base/Paths.h"
#include "base/Text.h"
#include "base/TextTable.h"
#include "platform/SystemInfo.h"
#include "platform/Users.h"
#include "selfcheck/SelfCheck.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"
#include "services/files/QWFileManager.h"
#include "tasks/HomeCheck.h"
#include "tasks/Question.h"
#include "tasks/Refusal.h"

namespace vantory {

namespace {

constexpr const char* kWhereToSend = "https://www.quarrywell.com/support/bug/";

std::string_view nameOf(Outcome outcome) {
  if (outcome == Outcome::NotTried) return "not tried";
  return outcome == Outcome::Held ? "held" : "NOT HELD";
}

std::size_t countOf(const std::vector<Checked>& checks, Outcome outcome) {
  return static_cast<std::size_t>(
      std::ranges::count(checks, outcome, [](const Checked& each) { return each.finding.outcome; }));
}

// What whoever reads the table must know of the machine.
struct Surroundings {
  explicit Surroundings(const std::string& folder) : folder(folder) {
    const SystemInfo& info = Runtime::current().platform().system;
    system = info.systemName();
    kernel = info.kernelName();
    fileSystem = info.fileSystemOf(folder);
  }

  std::string folder, system, kernel, fileSystem;
};

std::string table(const Surroundings& around, const std::vector<Checked>& checks) {
  TextTable table({"PART", "PROMISE", "RESULT", "REMARK"});
  for (const Checked& each : checks)
    table.add({each.part, each.promise, std::string(nameOf(each.finding.outcome)), each.finding.cause});
  return printable(formatted("Vantory %@ on %@ (%@)", VANTORY_VERSION, around.system, around.kernel)) + "\n" +
         printable(formatted("In %@, on a file system of the kind %@", around.folder,
                             around.fileSystem.empty() ? "that is not known" : around.fileSystem)) +
         "\n\n" + table.text() +
         formatted("\n%i held, %i not held, %i not tried. Please send this table to %@\n",
                   countOf(checks, Outcome::Held), countOf(checks, Outcome::NotHeld),
                   countOf(checks, Outcome::NotTried), kWhereToSend);
}

std::string json(const Surroundings& around, const std::vector<Checked>& checks, bool allHeld) {
  PropertyListArray entries;
  for (const Checked& each : checks) {
    PropertyListDictionary entry;
    entry.append("part", each.part);
    entry.append("promise", each.promise);
    entry.append("result", lowerCased(nameOf(each.finding.outcome)));
    entry.append("remark", each.finding.cause);
    entries.push_back(std::move(entry));
  }
  PropertyListDictionary answer;
  answer.append("version", VANTORY_VERSION);
  answer.append("system", around.system);
  answer.append("kernel", around.kernel);
  answer.append("folder", around.folder);
  answer.append("fileSystem", around.fileSystem);
  answer.append("allHeld", allHeld);
  answer.append("checks", std::move(entries));
  return writeJson(std::move(answer)) + "\n";
}

// Without links, which some checks do not follow.
std::string folderFor(const std::vector<std::string>& operands) {
  namespace fs = std::filesystem;
  std::error_code failure;
  const std::string folder =
      operands.empty() ? fs::temp_directory_path(failure).native()
                       : paths::absolute(operands.front(), Runtime::current().platform().system.workingDirectory());
  const fs::path canonical = fs::canonical(folder.empty() ? "/tmp" : folder, failure);
  return failure ? folder : canonical.native();
}

}  // namespace

int checkSelf(const QuestionContext& context) {
  Platform& platform = Runtime::current().platform();
  const auto refuse = [&](const std::string& reason) {
    return refuseLine(reason, platform.system.arguments(), context.output, context.errors);
  };
  // The superuser has no files of its own to work on.
  const auto home = QWLocalPaths::userDirectory();
  if (!home && platform.users.isSuperuser()) return refuse(*reasonToRefuse(home, false));
  if (context.operands.size() > 1) return refuse("--self-check works in one folder.");
  const bool isNamed = !context.operands.empty();
  if (isNamed && (context.operands.front().empty() || !QWFileManager::isDirectoryAtPath(folderFor(context.operands))))
    return refuse(formatted("There is no folder \"%@\" to work in.", context.operands.front()));
  const Surroundings around(folderFor(context.operands));
  const std::vector<Checked> checks = checkPlatform(platform, around.folder);
  const bool allHeld = countOf(checks, Outcome::NotHeld) == 0;
  context.output << (context.form == AnswerForm::Json ? json(around, checks, allHeld) : table(around, checks));
  return allHeld ? 0 : 1;
}

}  // namespace vantory
