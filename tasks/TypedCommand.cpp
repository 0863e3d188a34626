// Puts "--home" into a command.
#include "tasks/TypedCommand.h"

#include <string_view>

#include "base/Text.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"

namespace vantory {

std::optional<std::string> commandInThisHome(std::string command) {
  if (!Runtime::current().isHomeNamed) return command;
  const std::string home = QWLocalPaths::userDirectory().value_or("");
  if (!standsInQuotes(home)) return std::nullopt;
  const std::string_view program = "vantory";
  return command.insert(program.size(), " --home \"" + home + "\"");
}

}  // namespace vantory
