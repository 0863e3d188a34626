// What the program does with its command line: one task, an answer about itself, or the window.
#pragma once

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

#include "base/Result.h"

namespace vantory {

class TaskReport;

// Becomes another program with these arguments (its name first); returns only when that failed.
using ProgramReplacement = std::function<Status(const std::string& program, const std::vector<std::string>& arguments)>;

// Hears what a task did and did not do, when it has ended.
using ReportListener = std::function<void(const TaskReport& report)>;

// Runs what the process's arguments ask for and answers the exit code. Called once, on the main thread.
int runProgram(std::ostream& output, std::ostream& errors, const ProgramReplacement& become,
               const ReportListener& heard = {});

}  // namespace vantory
