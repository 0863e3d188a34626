// Decides between task, answer and window, and tells what failed.
#include "tasks/Program.h"

#include <algorithm>
#include <exception>
#include <optional>
#include <ostream>
#include <string_view>

#include "base/Paths.h"
#include "base/Text.h"
#include "platform/SystemInfo.h"
#include "platform/SystemLog.h"
#include "platform/Users.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"
#include "services/TaskReport.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWException.h"
#include "services/log/QWLog.h"
#include "tasks/AppController.h"
#include "tasks/Command.h"
#include "tasks/Help.h"
#include "tasks/HomeCheck.h"
#include "tasks/QWVantoryUtilities.h"
#include "tasks/Question.h"

namespace vantory {

namespace {

using Folder = std::optional<std::string>;

Platform& platform() {
  return Runtime::current().platform();
}

// For a task that must not begin. The reason is logged where there is a place for a log.
int refuse(const std::string& reason, const Folder& home) {
  // The superuser's log lies outside of all homes; everyone else's needs one.
  const bool canLog = home ? !QWFileManager::isWildcardPath(*home) : platform().users.isSuperuser();
  if (canLog) {
    QWLog::createNewLog(AppController::kTaskLogName);
    QWLog::appendLogAndPrint("%@", reason);
    QWLog::finishWriting();
  } else {
    platform().systemLog.write(printable(reason));
  }
  return 1;
}

// What failed as a whole, such as the writing of a backup, is told by its cause, which is in the log already;
// preference files are counted.
void tellFailures(const TaskReport& report) {
  std::size_t failures = 0;
  for (const FileReport& file : report.files()) {
    if (file.outcome != FileReport::Outcome::Failed) continue;
    if (file.action == FileAction::Write || file.action == FileAction::Sync)
      platform().systemLog.write(printable(file.cause->text));
    else
      ++failures;
  }
  if (failures == 0) return;
  QWLog::appendLogAndPrint("%i %@ could not be processed - see the log for details.", failures,
                           failures == 1 ? "file" : "files");
}

// One task from its identity to what is told of it.
int runCommand(const ChosenCommand& chosen, std::ostream& output, std::ostream& errors) {
  const Command& command = *chosen.command;
  if (command.asSuperuser) platform().users.becomeSuperuser();
  const Folder home = QWLocalPaths::userDirectory();
  if (const auto reason = reasonToRefuse(home, command.usesBackups)) return refuse(*reason, home);
  const std::string remark = command.usesBackups ? remarkOnHome(*home) : "";
  if (!remark.empty()) errors << "Vantory: " << remark << '\n';

  Runtime& runtime = Runtime::current();
  runtime.guard = &runtime.shared<QWVantoryUtilities>();
  AppController controller;
  controller.initWithoutGUI();
  TaskReport report;
  const int exitCode = command.run({platform().system.arguments(), chosen.position, controller, output, report});
  tellFailures(report);
  QWLog::finishWriting();
  return exitCode;
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

// What looks like an option of other programs might say where they are to work; this one would not.
std::optional<std::string> optionBefore(const std::vector<std::string>& arguments, std::size_t task) {
  for (std::size_t i = 1; i < task; ++i)
    if (arguments[i].starts_with("--")) return arguments[i];
  return std::nullopt;
}

int refuseOption(const std::string& option, std::ostream& errors) {
  errors << "Vantory: There is no option \"" << printable(option)
         << "\" to go before a task - nothing was done. See \"vantory --help\".\n";
  return 1;
}

// A task goes before a question, and a question before the window.
int runMode(std::ostream& output, std::ostream& errors, const ProgramReplacement& become) {
  const std::vector<std::string>& arguments = platform().system.arguments();
  const auto has = [&](std::string_view argument) {
    return std::find(arguments.begin(), arguments.end(), argument) != arguments.end();
  };
  // Whoever asks for a preview and writes the task with its dash does not want it done.
  if (const auto chosen = chooseCommand(arguments);
      chosen && !beginsWithQuestion(arguments) && !hasHelpAsOperand(arguments, chosen->position)) {
    if (const auto option = optionBefore(arguments, chosen->position)) return refuseOption(*option, errors);
    return runCommand(*chosen, output, errors);
  }
  if (has("--help") || has("-h")) {
    printHelp(output);
  } else if (has("--version")) {
    printVersion(output);
  } else if (const auto answered = answerQuestion(arguments, output, errors)) {
    return *answered;
  } else {
    return openWindow(arguments, errors, become);
  }
  return 0;
}

}  // namespace

int runProgram(std::ostream& output, std::ostream& errors, const ProgramReplacement& become) {
  try {
    const int exitCode = runMode(output, errors, become);
    if (output.flush()) return exitCode;
    errors << "Vantory: The output could not be written.\n";
  } catch (const std::exception& exception) {
    QWException::logException(exception, "runProgram");
  }
  return 1;
}

}  // namespace vantory
