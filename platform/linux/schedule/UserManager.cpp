// Calls systemctl for the right user.
#include "platform/linux/schedule/UserManager.h"

#include <unistd.h>

#include <cstdlib>
#include <optional>

#include "platform/Users.h"
#include "platform/posix/files/Errors.h"
#include "platform/posix/processes/ToolRun.h"

namespace vantory {

namespace {

using std::chrono::milliseconds;

// There systemctl finds the manager's socket.
std::string runtimeFolder(std::uint32_t user) {
  return "XDG_RUNTIME_DIR=/run/user/" + std::to_string(user);
}

}  // namespace

UserManager::UserManager(const Users& users, std::string tool, milliseconds limit)
    : users_(users), tool_(std::move(tool)), limit_(limit) {}

// For the superuser's process a child speaks that gives its rights up for good.
Result<ChildProgram> UserManager::program(const std::vector<std::string>& arguments) const {
  ChildProgram program{.path = tool_, .arguments = {"--user", "--no-ask-password"}, .environment = cleanEnvironment()};
  program.arguments.insert(program.arguments.end(), arguments.begin(), arguments.end());
  if (!users_.isSuperuser()) {
    if (!std::getenv("XDG_RUNTIME_DIR")) program.environment.push_back(runtimeFolder(getuid()));
    return program;
  }
  const std::optional<User> user = users_.consoleUser();
  if (!user) return errorWithText(std::errc::no_such_process, tool_, "nobody is logged in at the console");
  std::vector<std::string> asUser = {"--reuid=" + std::to_string(user->id),
                                     "--regid=" + std::to_string(user->group),
                                     "--init-groups",
                                     "--inh-caps=-all",
                                     "--",
                                     tool_};
  asUser.insert(asUser.end(), program.arguments.begin(), program.arguments.end());
  program.path = "/usr/bin/setpriv";
  program.arguments = std::move(asUser);
  program.environment.insert(program.environment.end(), {"HOME=" + user->home, runtimeFolder(user->id)});
  return program;
}

Status UserManager::run(const std::vector<std::string>& arguments) const {
  Result<ChildProgram> child = program(arguments);
  if (!child) return child.error();
  const Result<ToolEnd> end = runTool(std::move(*child), limit_);
  if (!end && end.error().code == std::errc::timed_out)
    return errorWithText(std::errc::timed_out, tool_, "no answer from the user's service manager");
  if (!end) return end.error();
  return end->status == 0 ? Status() : errorWithText(std::errc::io_error, tool_, faultOf(*end));
}

}  // namespace vantory
