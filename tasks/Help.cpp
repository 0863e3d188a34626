// Prints the help and the version.
#include "tasks/Help.h"

#include <iomanip>
#include <ostream>
#include <string>
#include <string_view>

#include "tasks/Question.h"
#include "tasks/TaskCommand.h"
#include "tasks/TaskOptions.h"

namespace vantory {

namespace {

// An option that is too long for its column has a line of its own.
void printRow(std::ostream& output, std::string_view option, std::string_view operands, std::string_view purpose) {
  std::string left(option);
  if (!operands.empty()) left.append(" ").append(operands);
  constexpr std::size_t kWidth = 22;
  output << "  " << std::left << std::setw(kWidth) << left;
  if (left.size() >= kWidth) output << "\n  " << std::setw(kWidth) << "";
  output << purpose << '\n';
}

}  // namespace

void printHelp(std::ostream& output) {
  output << "Usage: vantory [--home DIR] [--json] [--strict] [TASK [OPERANDS]]\n"
            "       vantory --homes PATTERN... [--jobs N] [--busy] [--json] TASK [OPERANDS]\n"
            "       vantory FILE...\n"
            "Looks after the preference files of video-editing applications.\n"
            "Without a task the window opens. Of several tasks the first in this list is done.\n"
            "FILE is a project, which opens with the preferences of the backup that it is linked to, or a backup to "
            "import.\n\n";
  for (const TaskCommand& command : commandTable()) printRow(output, command.option, command.operands, command.purpose);
  output << "\nBefore a task:\n\n";
  printRow(output, "--home DIR", "", "Work in this home, as its owner when started by root; also before a question.");
  printRow(output, "--homes PATTERN...", "",
           "The same in many homes, or \"-\" for lines of standard input; then a table.");
  printRow(output, "--jobs N", "", "With --homes: so many at once (default: one for each processor).");
  printRow(output, "--busy", "", "With --homes: also those with a file changed within the last minute.");
  printRow(output, kJson, "", "Report in JSON what was done to each file.");
  printRow(output, kStrict, "", "Let the exit code tell more (below).");
  output << "\nTo see without changing anything, with no task on the line:\n\n";
  for (const Question& question : questionTable())
    printRow(output, question.option, question.operands, question.purpose);
  printRow(output, "--json", "", "With one of these: answer in JSON.");
  printRow(output, "--print0", "", "With a list: only the keys, or paths, each ended by a zero byte.");
  printRow(output, "-h, --help", "", "Print this text.");
  printRow(output, "--version", "", "Print the version.");
  output
      << "\n"
         "KEYS   item keys separated by commas, such as fcpPrefs,motionPrefs. For -trash, -lock and -unlock also\n"
         "       -allprefs (every item of preferences proper) or -allfiles (every item).\n"
         "NAME   of the backup; one that bears it already goes to the Trash when another is made. Where more than two\n"
         "       arguments follow -backup, the third is KEYS. For the tasks with two dashes also a backup's path.\n"
         "PATH   of a backup folder.\n"
         "\n"
         "With -task or -hotkey as the very last argument a task shows desktop notifications. Right after a task\n"
         "option it counts as an operand.\n"
         "\n"
         "A preview's task is written without its dash, such as \"--preview trash fcp\".\n"
         "\n"
         "Exit code: 0 when the task was begun, also where files failed or no backup came of it (standard error\n"
         "and the log say so);\n"
         "1 when it could not be begun (a missing or invalid operand, a mistyped task, an unknown option before\n"
         "the task, no default backup, nothing at PATH, no usable home folder, nobody at the console), when a question "
         "was\n"
         "asked wrongly, when backups to list could not be read, when output could not be written, or when the\n"
         "window could not be opened.\n"
         "A preview ends as the task would. With --strict: 0 when all was done, 1 when it could not be begun, 3 when\n"
         "something failed or was passed over, 4 when an operand was not understood or nothing matched.\n";
}

void printVersion(std::ostream& output) {
  output << "Vantory " VANTORY_VERSION "\n";
}

}  // namespace vantory
