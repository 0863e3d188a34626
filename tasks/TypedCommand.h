// A command for somebody to type.
#pragma once

#include <optional>
#include <string>

namespace vantory {

// The command, which begins with "vantory", so that it works in this process's home: one that was named is named in it.
// None where a shell would read the home's name otherwise.
std::optional<std::string> commandInThisHome(std::string command);

}  // namespace vantory
