// The tasks of the command line.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vantory {

class AppController;
class TaskReport;
class TaskReceipt;
struct TaskFailure;
enum class FileAction;

// What a running command has to work with.
struct CommandContext {
  const std::vector<std::string>& arguments;  // the whole list, the program first
  std::size_t position;                       // of the option
  const AppController& controller;
  std::ostream& output;
  TaskReport& report;              // to be filled
  TaskReceipt* receipt = nullptr;  // of the task; null where nothing is really done

  std::size_t operandCount() const { return arguments.size() - position - 1; }
  // How many there are but for a last "-task" or "-hotkey".
  std::size_t ownOperandCount() const;
  // The n-th argument after the option, counted from 1; none when there are fewer.
  std::optional<std::string> operand(std::size_t number) const;
  // The n-th, which there is, as an absolute path without "." and "..", and without the slash that a completed folder
  // name ends with. Nothing stays nothing.
  std::string pathOperand(std::size_t number) const;
  // Tells of what keeps the command from being begun, and answers its exit code.
  int refuse(const TaskFailure& failure) const;
  // The same where an operand is missing, which the system's log alone is told, with what is expected.
  int refuseWithoutOperand() const;
};

// One row of the command table.
struct TaskCommand {
  std::string_view option;
  std::string_view operands;  // as the help shows them
  std::string_view purpose;
  int (*run)(const CommandContext& context);  // answers the exit code
  bool asSuperuser;                           // takes the superuser's identity where it can
  bool usesBackups;                           // reads or writes backups
  std::size_t mostOperands;                   // how many it heeds
  std::optional<FileAction> deed = {};        // what it does to files; none for a command that only tells

  // Without dashes.
  std::string_view name() const { return option.substr(option.find_first_not_of('-')); }
};

// In the order they are looked for: the first whose option is given anywhere wins.
std::span<const TaskCommand> commandTable();

// The command whose option, without its dash, is the word; null when there is none.
const TaskCommand* commandNamed(std::string_view word);

// The command that the arguments ask for, and where its option stands.
struct ChosenCommand {
  const TaskCommand* command;
  std::size_t position;
};
std::optional<ChosenCommand> chooseCommand(const std::vector<std::string>& arguments);

int autoBackupCommand(const CommandContext& context);
int restoreDefaultCommand(const CommandContext& context);
int listCommand(const CommandContext& context);
int trashCommand(const CommandContext& context);
int lockCommand(const CommandContext& context);
int unlockCommand(const CommandContext& context);
int backupCommand(const CommandContext& context);
int restoreCommand(const CommandContext& context);
int defaultCommand(const CommandContext& context);
int renameCommand(const CommandContext& context);
int removeCommand(const CommandContext& context);
int updateCommand(const CommandContext& context);
int pruneCommand(const CommandContext& context);
int restoreKeysCommand(const CommandContext& context);
int undoCommand(const CommandContext& context);

}  // namespace vantory
