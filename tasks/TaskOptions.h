// What a command line says about how its task is to answer.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantory {

inline constexpr std::string_view kJson = "--json";
inline constexpr std::string_view kStrict = "--strict";

struct TaskOptions {
  bool json = false;    // the report goes to standard output
  bool strict = false;  // the exit code tells more
};

bool isTaskOption(std::string_view argument);

// From the arguments before the task, which stands at `task`.
TaskOptions optionsBefore(const std::vector<std::string>& arguments, std::size_t task);

// The first argument before the task that begins like an option and is none; none where there is no such. What looks
// like an option of other programs might say where they are to work.
std::optional<std::string> unknownOptionBefore(const std::vector<std::string>& arguments, std::size_t task);

}  // namespace vantory
