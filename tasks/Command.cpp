// The table of commands, and the search in it.
#include "tasks/Command.h"

#include <algorithm>

namespace vantory {

namespace {

constexpr Command kCommands[] = {
    {"-autobackup", "", "Back up all preferences into a new automatic backup.", autoBackupCommand, true, true},
    {"-restoredefault", "", "Restore the backup that is marked as default.", restoreDefaultCommand, true, true},
    {"-list", "", "Print the backups of the library as a property list.", listCommand, false, true},
    {"-trash", "[KEYS]", "Move preference files to the Trash (default: -allprefs).", trashCommand, true, false},
    {"-lock", "[KEYS]", "Lock preference files against changes (default: -allfiles).", lockCommand, true, false},
    {"-unlock", "[KEYS]", "Unlock preference files (default: -allfiles).", unlockCommand, true, false},
    {"-backup", "NAME [KEYS]", "Back up into the library under this name (default: all items).", backupCommand, true,
     true},
    {"-restore", "PATH [KEYS]", "Restore the backup at this path (default: all it holds).", restoreCommand, true, true},
};

}  // namespace

std::span<const Command> commandTable() {
  return kCommands;
}

// The table's order counts, not that of the arguments.
std::optional<ChosenCommand> chooseCommand(const std::vector<std::string>& arguments) {
  for (const Command& command : kCommands) {
    const auto option = std::find(arguments.begin(), arguments.end(), command.option);
    if (option != arguments.end()) return ChosenCommand{&command, static_cast<std::size_t>(option - arguments.begin())};
  }
  return std::nullopt;
}

std::optional<std::string> CommandContext::operand(std::size_t number) const {
  if (number > operandCount()) return std::nullopt;
  return arguments[position + number];
}

}  // namespace vantory
