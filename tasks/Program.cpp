// Decides between task, answer and window, and tells what failed.
#include "tasks/Program.h"

#include <algorithm>
#include <exception>
#include <optional>
#include <ostream>
#include <string_view>

#include "base/ExitCodes.h"
#include "base/Format.h"
#include "base/Json.h"
#include "base/Paths.h"
#include "base/Text.h"
#include "platform/Clock.h"
#include "platform/SystemInfo.h"
#include "platform/SystemLog.h"
#include "platform/Users.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"
#include "services/TaskReport.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWException.h"
#include "services/log/QWLog.h"
#include "services/receipts/TaskReceipt.h"
#include "tasks/AppController.h"
#include "tasks/Help.h"
#include "tasks/HomeCheck.h"
#include "tasks/Misspelling.h"
#include "tasks/QWVantoryUtilities.h"
#include "tasks/Question.h"
#include "tasks/Refusal.h"
#include "tasks/TaskAccount.h"
#include "tasks/TaskCommand.h"
#include "tasks/TaskOptions.h"
#include "tasks/TypedCommand.h"

namespace vantory {

namespace {

using Folder = std::optional<std::string>;

Platform& platform() {
  return Runtime::current().platform();
}

// For a task that must not begin. The reason is logged where there is a place for a log.
void refuse(const std::string& reason, const Folder& home) {
  // The superuser's log lies outside of all homes; everyone else's needs one.
  const bool canLog = home ? !QWFileManager::isWildcardPath(*home) : platform().users.isSuperuser();
  if (canLog) {
    QWLog::createNewLog(AppController::kTaskLogName);
    QWLog::appendLogAndPrint("%@", reason);
    QWLog::finishWriting();
  } else {
    platform().systemLog.write(printable(reason));
  }
}

// What a task did, beside the result it always gave.
class TaskEnding {
 public:
  TaskEnding(const TaskCommand& command, TaskOptions options, std::ostream& output, std::ostream& errors)
      : command_(command), options_(options), output_(output), errors_(errors) {}

  // Tells of the report, and answers the exit code.
  int tell(int exitCode, TaskReport& report, const TaskReceipt* receipt = nullptr) const {
    if (options_.strict) {
      exitCode = strictExitCode(exitCode, report, command_.deed);
      if (exitCode == kNothingMatched && command_.deed)
        if (const auto nothing = sentenceOnNothing(*command_.deed, report); !nothing.empty()) report.notice(nothing);
    }
    tellWhatWasNotDone(report, true);
    QWLog::finishWriting();
    if (options_.json) output_ << json(exitCode, report);
    // A remark says already why there was nothing to do.
    if (command_.deed && exitCode == 0 && report.isWhole() && report.remarks().empty() &&
        platform().system.hasTerminal()) {
      const std::string sentence = sentenceOn(*command_.deed, report);
      const std::string undo = receipt && receipt->isOfUse() ? undoHint(*receipt) : "";
      if (!sentence.empty()) errors_ << printable(sentence) << undo << '\n';
    }
    return exitCode;
  }

 private:
  static std::string undoHint(const TaskReceipt& receipt) {
    const auto command = commandInThisHome(receipt.undoCommand());
    return command ? " Undo: " + *command : "";
  }

  std::string json(int exitCode, const TaskReport& report) const {
    PropertyListDictionary account;
    account.append("task", std::string(command_.name()));
    account.append("began", began_);
    account.append("ended", platform().clock.now());
    account.append("exitCode", exitCode);
    appendFields(account, report);
    if (auto path = QWLog::sharedController().path()) account.append("log", std::move(*path));
    return writeJson(std::move(account)) + "\n";
  }

  const TaskCommand& command_;
  const TaskOptions options_;
  std::ostream& output_;
  std::ostream& errors_;
  const Timestamp began_ = platform().clock.now();
};

// One task from its identity to what is told of it.
int runCommand(const ChosenCommand& chosen, TaskOptions options, std::ostream& output, std::ostream& errors,
               const ProgramListener& heard) {
  const TaskCommand& command = *chosen.command;
  if (command.asSuperuser) platform().users.becomeSuperuser();
  const Folder home = QWLocalPaths::userDirectory();
  const TaskEnding ending(command, options, output, errors);
  TaskReport report;
  if (const auto reason = reasonToRefuse(home, command.usesBackups)) {
    refuse(*reason, home);
    report.refuse(*reason);
    if (heard.task) heard.task(report);
    return ending.tell(1, report);
  }
  const std::string remark = command.usesBackups ? remarkOnHome(*home) : "";
  if (!remark.empty()) errors << "Vantory: " << remark << '\n';
  for (const std::string& each : {remarkOnMissingHome(*home), remarkOnOtherHome(*home)})
    if (!each.empty()) report.notice(each);

  Runtime& runtime = Runtime::current();
  runtime.guard = &runtime.shared<QWVantoryUtilities>();
  AppController controller;
  controller.initWithoutGUI();
  const std::vector<std::string>& arguments = platform().system.arguments();
  TaskReceipt receipt(
      report, {.name = std::string(command.name()),
               .operands = {arguments.begin() + static_cast<std::ptrdiff_t>(chosen.position) + 1, arguments.end()}});
  const CommandContext context{arguments, chosen.position, controller, output, report, &receipt};
  noteUnusedArguments(context, command.mostOperands);
  const int exitCode = command.run(context);
  receipt.end();
  if (heard.task) heard.task(report);
  return ending.tell(exitCode, report, &receipt);
}

// Becomes the window's program, which lies beside this one.
int openWindow(const std::vector<std::string>& arguments, std::ostream& errors, const ProgramReplacement& become) {
  const std::string program = paths::join(paths::parent(platform().system.executablePath()), "vantory-window");
  const Status status = become(program, arguments);
  if (status.ok()) return 0;
  if (status.error().code == std::errc::no_such_file_or_directory)
    errors << "Vantory: No window is installed. \"vantory --help\" lists the tasks that need none.\n";
  else
    errors << "Vantory: The window cannot be opened. " << printable(status.error().text) << '\n';
  return 1;
}

// Whoever asks about a task does not want it done.
bool hasHelpAsOperand(const std::vector<std::string>& arguments, std::size_t task) {
  return task + 1 < arguments.size() && (arguments[task + 1] == "--help" || arguments[task + 1] == "-h");
}

// Why an option keeps the task from being begun; none where nothing does.
std::optional<std::string> faultIn(const std::vector<std::string>& arguments, const ChosenCommand& chosen) {
  if (const auto option = unknownOptionBefore(arguments, chosen.position))
    return formatted("There is no option \"%@\" to go before a task - nothing was done. See \"vantory --help\".",
                     *option);
  // "-list" has a form of its own.
  if (optionsBefore(arguments, chosen.position).json && !chosen.command->deed)
    return formatted("%@ answers with a property list. \"vantory --list-backups --json\" answers in JSON.",
                     chosen.command->option);
  // Of a task with one dash it is told as an operand that was not used, unless it would be used.
  const std::size_t first = chosen.position + 1;
  const std::size_t end = chosen.command->option.starts_with("--") ? arguments.size()
                          : chosen.command->mostOperands > 0       ? first + 1
                                                                   : first;
  for (std::size_t i = first; i < std::min(end, arguments.size()); ++i)
    if (isTaskOption(arguments[i]))
      return formatted("%@ goes before the task: \"vantory %@ %@\" - nothing was done.", arguments[i], arguments[i],
                       chosen.command->option);
  return std::nullopt;
}

bool has(const std::vector<std::string>& arguments, std::string_view argument) {
  return std::ranges::count(arguments, argument) > 0;
}

// Whoever asks for a preview and writes the task with its dash does not want it done.
std::optional<ChosenCommand> taskIn(const std::vector<std::string>& arguments) {
  const auto chosen = beginsWithQuestion(arguments) ? std::nullopt : chooseCommand(arguments);
  return chosen && !hasHelpAsOperand(arguments, chosen->position) ? chosen : std::nullopt;
}

// A task goes before a question, and a question before the window.
int runMode(std::ostream& output, std::ostream& errors, const ProgramReplacement& become,
            const ProgramListener& heard) {
  const std::vector<std::string>& arguments = platform().system.arguments();
  if (const auto fault = faultInOptions(arguments)) return refuseLine(*fault, arguments, output, errors);
  if (const auto chosen = taskIn(arguments))
    return runCommand(*chosen, optionsBefore(arguments, chosen->position), output, errors, heard);
  if (has(arguments, "--help") || has(arguments, "-h")) {
    printHelp(output);
  } else if (has(arguments, "--version")) {
    printVersion(output);
  } else if (const auto answered = answerQuestion(arguments, output, errors, heard.question)) {
    return *answered;
  } else if (const auto meant = whatWasMeant(arguments)) {
    return refuseLine(*meant + " See \"vantory --help\".", arguments, output, errors);
  } else if (Runtime::current().isHomeNamed) {
    return refuseLine("Behind a home a task or a question is missing. See \"vantory --help\".", arguments, output,
                      errors);
  } else {
    return openWindow(arguments, errors, become);
  }
  return 0;
}

}  // namespace

bool asksAboutProgram(const std::vector<std::string>& arguments) {
  const bool isAsked = has(arguments, "--help") || has(arguments, "-h") || has(arguments, "--version");
  return isAsked && !taskIn(arguments);
}

std::optional<std::string> faultInOptions(const std::vector<std::string>& arguments) {
  const auto chosen = taskIn(arguments);
  return chosen ? faultIn(arguments, *chosen) : std::nullopt;
}

int runProgram(std::ostream& output, std::ostream& errors, const ProgramReplacement& become,
               const ProgramListener& heard) {
  try {
    const int exitCode = runMode(output, errors, become, heard);
    if (output.flush()) return exitCode;
    if (platform().system.hasReader()) errors << "Vantory: The output could not be written.\n";
  } catch (const std::exception& exception) {
    QWException::logException(exception, "runProgram");
  }
  return 1;
}

}  // namespace vantory
