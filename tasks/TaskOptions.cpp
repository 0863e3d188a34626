// Reads the options before a task.
#include "tasks/TaskOptions.h"

namespace vantory {

bool isTaskOption(std::string_view argument) {
  return argument == kJson || argument == kStrict;
}

TaskOptions optionsBefore(const std::vector<std::string>& arguments, std::size_t task) {
  TaskOptions options;
  for (std::size_t i = 1; i < task; ++i) {
    options.json |= arguments[i] == kJson;
    options.strict |= arguments[i] == kStrict;
  }
  return options;
}

// What looks like an option of other programs might say where they are to work; this one would not.
std::optional<std::string> unknownOptionBefore(const std::vector<std::string>& arguments, std::size_t task) {
  for (std::size_t i = 1; i < task; ++i)
    if (arguments[i].starts_with("--") && !isTaskOption(arguments[i])) return arguments[i];
  return std::nullopt;
}

}  // namespace vantory
