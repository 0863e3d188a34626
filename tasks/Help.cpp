#include "tasks/Help.h"

#include <iomanip>
#include <ostream>
#include <string>

#include "tasks/Command.h"

namespace vantory {

void printHelp(std::ostream& output) {
  output << "Usage: vantory [TASK [OPERANDS]]\n"
            "       vantory FILE...\n"
            "Looks after the preference files of video-editing applications.\n"
            "Without a task the window opens. Of several tasks the first in this list is done.\n"
            "FILE is a project, which opens with the preferences of the backup that it is linked to, or a backup to "
            "import.\n\n";
  for (const Command& command : commandTable()) {
    std::string option(command.option);
    if (!command.operands.empty()) option.append(" ").append(command.operands);
    output << "  " << std::left << std::setw(22) << option << command.purpose << '\n';
  }
  output << "  " << std::setw(22) << "-h, --help"
         << "Print this text.\n"
         << "  " << std::setw(22) << "--version"
         << "Print the version.\n"
         << "\n"
            "KEYS   item keys separated by commas, such as fcpPrefs,motionPrefs. For -trash, -lock and -unlock also\n"
            "       -allprefs (every item of preferences proper) or -allfiles (every item).\n"
            "NAME   of the backup; one that bears it already goes to the Trash. Where more than two arguments follow\n"
            "       -backup, the third is KEYS.\n"
            "PATH   of a backup folder.\n"
            "\n"
            "With -task or -hotkey as the very last argument a task shows desktop notifications. Right after a task\n"
            "option it counts as an operand.\n"
            "\n"
            "Exit code: 0 when the task was done, also where single files failed (the log says which);\n"
            "1 when it could not be begun (a missing or invalid operand, no default backup, no backup at PATH,\n"
            "nobody at the console), when output could not be written, or when no window is installed.\n";
}

void printVersion(std::ostream& output) {
  output << "Vantory " VANTORY_VERSION "\n";
}

}  // namespace vantory
