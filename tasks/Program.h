// What the program does with its command line: one task, an answer about itself, or the window.
#pragma once

#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "base/Result.h"

namespace vantory {

class TaskReport;

// Becomes another program with these arguments (its name first); returns only when that failed.
using ProgramReplacement = std::function<Status(const std::string& program, const std::vector<std::string>& arguments)>;

// Hears what came of the line, when it has ended.
struct ProgramListener {
  std::function<void(const TaskReport& report)> task;        // what a task did and did not do
  std::function<void(const std::string& finding)> question;  // what an answer says is amiss, as a sentence
};

// Whether the line asks for help or the version, which are nobody's in particular.
bool asksAboutProgram(const std::vector<std::string>& arguments);

// Why the task that the line asks for must not be begun, whosever home it is for: a sentence about its options. None
// where nothing keeps it, or there is no task.
std::optional<std::string> faultInOptions(const std::vector<std::string>& arguments);

// Runs what the process's arguments ask for and answers the exit code. Called once, on the main thread.
int runProgram(std::ostream& output, std::ostream& errors, const ProgramReplacement& become,
               const ProgramListener& heard = {});

}  // namespace vantory
