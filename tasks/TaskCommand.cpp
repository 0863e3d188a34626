// The table of commands, and the search in it.
#include "tasks/TaskCommand.h"

#include <algorithm>
#include <limits>

#include "base/Format.h"
#include "base/Paths.h"
#include "platform/SystemInfo.h"
#include "platform/SystemLog.h"
#include "services/Runtime.h"
#include "services/TaskReport.h"
#include "tasks/AppController.h"

namespace vantory {

namespace {

constexpr TaskCommand kCommands[] = {
    {"-autobackup", "", "Back up all preferences into a new automatic backup.", autoBackupCommand, true, true, 0,
     FileAction::Copy},
    {"-restoredefault", "", "Restore the backup that is marked as default.", restoreDefaultCommand, true, true, 0,
     FileAction::Restore},
    {"-list", "", "Print the backups of the library as a property list.", listCommand, false, true, 0},
    {"-trash", "[KEYS]", "Move preference files to the Trash (default: -allprefs).", trashCommand, true, false, 1,
     FileAction::Trash},
    {"-lock", "[KEYS]", "Lock preference files against changes (default: -allfiles).", lockCommand, true, false, 1,
     FileAction::Lock},
    {"-unlock", "[KEYS]", "Unlock preference files (default: -allfiles).", unlockCommand, true, false, 1,
     FileAction::Unlock},
    {"-backup", "NAME [KEYS]", "Back up into the library under this name (default: all items).", backupCommand, true,
     true, 3, FileAction::Copy},
    {"-restore", "PATH [KEYS]", "Restore the backup at this path (default: all it holds).", restoreCommand, true, true,
     2, FileAction::Restore},
    {"--default", "NAME|none", "Make this backup of the library the default, or none.", defaultCommand, true, true, 1,
     FileAction::Write},
    {"--rename", "NAME NEW", "Rename a backup of the library.", renameCommand, true, true, 2, FileAction::Move},
    {"--remove", "NAME", "Move a backup of the library to the Trash.", removeCommand, true, true, 1, FileAction::Trash},
    {"--update", "NAME", "Replace what a backup holds by the present files.", updateCommand, true, true, 1,
     FileAction::Copy},
    {"--prune", "[N]", "Remove all but N automatic backups for good (default: as the settings say).", pruneCommand,
     true, true, 1, FileAction::Remove},
    {"--restore-keys", "BACKUP ITEM KEYPATH...", "Put only these keys of a property list back.", restoreKeysCommand,
     true, true, std::numeric_limits<std::size_t>::max(), FileAction::Restore},
    {"--undo", "[RECEIPT]", "Take a task back (default: the newest that was not).", undoCommand, true, true, 1,
     FileAction::PutBack},
};

}  // namespace

std::span<const TaskCommand> commandTable() {
  return kCommands;
}

const TaskCommand* commandNamed(std::string_view word) {
  for (const TaskCommand& command : kCommands)
    if (command.name() == word) return &command;
  return nullptr;
}

// The table's order counts, not that of the arguments.
std::optional<ChosenCommand> chooseCommand(const std::vector<std::string>& arguments) {
  for (const TaskCommand& command : kCommands) {
    const auto option = std::find(arguments.begin(), arguments.end(), command.option);
    if (option != arguments.end()) return ChosenCommand{&command, static_cast<std::size_t>(option - arguments.begin())};
  }
  return std::nullopt;
}

std::size_t CommandContext::ownOperandCount() const {
  const std::size_t count = operandCount();
  return count > 0 && asksForNotifications(*operand(count)) ? count - 1 : count;
}

std::optional<std::string> CommandContext::operand(std::size_t number) const {
  if (number > operandCount()) return std::nullopt;
  return arguments[position + number];
}

std::string CommandContext::pathOperand(std::size_t number) const {
  const std::string path = *operand(number);
  if (path.empty()) return path;
  return paths::absolute(path, Runtime::current().platform().system.workingDirectory());
}

int CommandContext::refuse(const TaskFailure& failure) const {
  controller.reportFailure(failure);
  report.refuse(failure.description);
  return 1;
}

int CommandContext::refuseWithoutOperand() const {
  constexpr const char* kReason = "Invalid number of arguments";
  Runtime::current().platform().systemLog.write(kReason);
  report.refuse(kReason);
  const auto command = std::ranges::find(kCommands, arguments[position], &TaskCommand::option);
  report.remark(formatted("Usage: vantory %@ %@", command->option, command->operands));
  return 1;
}

}  // namespace vantory
