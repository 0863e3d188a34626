// A task's report, as whoever typed the task gets it: lines on standard error, JSON, and an exit code.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "base/PropertyList.h"

namespace vantory {

class TaskReport;
struct CommandContext;
enum class FileAction;

// Notes the arguments that the command did not look at: those before the task, and surplus operands.
void noteUnusedArguments(const CommandContext& context, std::size_t mostOperands);

// Notes that a backup is kept under another name than was asked for, where it is.
void noteKeptName(const std::string& wanted, const std::string& kept, TaskReport& report);

// Writes to the system's log and standard error what was not done as asked, with causes and cures, at most a screenful;
// nothing where everything was. Says where the log lies, unless the task keeps none.
void tellWhatWasNotDone(const TaskReport& report, bool keepsLog);

// That nothing was found to do this to, and where it was looked for; empty where the report tells why.
std::string sentenceOnNothing(FileAction deed, const TaskReport& report);

// One line for a person: what the report has as its summary, else how many files of how many items.
std::string sentenceOn(FileAction deed, const TaskReport& report);

// The report's fields for scripts: counts, files, passedOver, unused, notices, remarks, error.
void appendFields(PropertyListDictionary& fields, const TaskReport& report);

// 0 all done; 1 not begun; 3 something failed or was passed over; 4 an operand was not understood, or nothing matched.
// `deed` is what the task does to files; none for one that only tells.
int strictExitCode(int exitCode, const TaskReport& report, std::optional<FileAction> deed);

}  // namespace vantory
