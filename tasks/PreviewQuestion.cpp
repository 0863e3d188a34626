// "--preview": what a task would do to which files.

#include <algorithm>
#include <ostream>
#include <sstream>

#include "base/Json.h"
#include "base/Text.h"
#include "base/TextTable.h"
#include "platform/SystemInfo.h"
#include "platform/Users.h"
#include "services/TaskReport.h"
#include "tasks/DryRun.h"
#include "tasks/Question.h"
#include "tasks/Refusal.h"
#include "tasks/TaskAccount.h"
#include "tasks/TaskCommand.h"

namespace vantory {

namespace {

// Scripts read these words too, so they stay as they are.
const char* wordFor(Change::Kind kind) {
  switch (kind) {
    case Change::Kind::Trash:
      return "trash";
    case Change::Kind::Copy:
      return "copy";
    case Change::Kind::Move:
      return "move";
    case Change::Kind::Remove:
      return "remove";
    case Change::Kind::Write:
      return "write";
    case Change::Kind::CreateFolder:
      return "make folder";
    case Change::Kind::Lock:
      return "lock";
    case Change::Kind::Unlock:
      break;
  }
  return "unlock";
}

// A change that would be refused stands there with the reason.
std::string table(const std::vector<Change>& changes) {
  if (changes.empty()) return "Nothing would be changed.\n";
  TextTable table({"ACTION", "PATH"});
  for (const Change& change : changes) {
    const std::string action = wordFor(change.kind);
    if (change.refusal)
      table.add({"cannot " + action, change.path + " (" + *change.refusal + ")"});
    else
      table.add({action, change.path});
    if (!change.destination.empty()) table.add({"  to", change.destination});
  }
  return table.text();
}

std::string json(const TaskCommand& command, int exitCode, const TaskReport& report,
                 const std::vector<Change>& changes) {
  PropertyListArray entries;
  for (const Change& change : changes) {
    PropertyListDictionary entry;
    entry.append("action", wordFor(change.kind));
    entry.append("path", change.path);
    if (!change.destination.empty()) entry.append("to", change.destination);
    if (change.refusal) entry.append("refused", *change.refusal);
    entries.push_back(std::move(entry));
  }
  PropertyListDictionary preview;
  preview.append("task", std::string(command.name()));
  preview.append("exitCode", exitCode);
  preview.append("changes", std::move(entries));
  appendFields(preview, report);
  return writeJson(std::move(preview)) + "\n";
}

// Names all tasks that there are.
int refuse(const QuestionContext& context) {
  std::string reason = "--preview needs the name of a task:";
  for (const TaskCommand& command : commandTable()) reason.append(" ").append(command.name());
  return refuseLine(reason + ".", Runtime::current().platform().system.arguments(), context.output, context.errors);
}

}  // namespace

int previewTask(const QuestionContext& context) {
  const TaskCommand* command = context.operands.empty() ? nullptr : commandNamed(context.operands.front());
  if (!command) return refuse(context);
  std::vector<std::string> arguments = context.operands;
  arguments.front() = command->option;
  arguments.insert(arguments.begin(), "vantory");

  if (command->asSuperuser) Runtime::current().platform().users.becomeSuperuser();
  DryRun run(arguments, context.errors);
  int exitCode = 1;
  TaskReport report;
  if (const Status begun = run.begin(command->usesBackups)) {
    std::ostringstream printed;  // what the task says is not what it does
    const CommandContext task{arguments, 1, run.controller(), printed, report};
    noteUnusedArguments(task, command->mostOperands);
    exitCode = command->run(task);
  } else {
    report.refuse(begun.error().text);
  }
  tellWhatWasNotDone(report, false);
  context.output << (context.form == AnswerForm::Json ? json(*command, exitCode, report, run.changes())
                                                      : table(run.changes()));
  return exitCode;
}

}  // namespace vantory
