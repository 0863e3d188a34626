#include "platform/posix/processes/ProgramReplacement.h"

#include <unistd.h>

#include "platform/posix/files/Errors.h"

namespace vantory {

Status replaceProgram(const std::string& program, const std::vector<std::string>& arguments) {
  if (!program.starts_with('/')) return systemError(program, EINVAL);
  std::vector<char*> list;
  list.reserve(arguments.size() + 1);
  for (const std::string& argument : arguments) list.push_back(const_cast<char*>(argument.c_str()));
  list.push_back(nullptr);
  ::execv(program.c_str(), list.data());
  return systemError(program);
}

}  // namespace vantory
