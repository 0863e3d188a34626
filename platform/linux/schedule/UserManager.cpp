// Calls systemctl for the right user.
#include "platform/linux/schedule/UserManager.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <optional>

#include "platform/Users.h"
#include "platform/posix/files/Descriptor.h"
#include "platform/posix/files/Errors.h"

namespace vantory {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr std::size_t kLargestMessage = 4096;

// There systemctl finds the manager's socket.
std::string runtimeFolder(std::uint32_t user) {
  return "XDG_RUNTIME_DIR=/run/user/" + std::to_string(user);
}

// Reads to the end, or none when the time is over first. More than the largest message is passed over.
std::optional<std::string> readUntil(steady_clock::time_point limit, int stream) {
  std::string text;
  std::array<char, 512> chunk{};
  for (;;) {
    const auto left = std::chrono::ceil<milliseconds>(limit - steady_clock::now()).count();
    if (left <= 0) return std::nullopt;
    pollfd readable{stream, POLLIN, 0};
    if (uninterrupted([&] { return poll(&readable, 1, static_cast<int>(left)); }) <= 0) continue;
    const ssize_t count = uninterrupted([&] { return read(stream, chunk.data(), chunk.size()); });
    if (count <= 0) return text;
    text.append(chunk.data(), std::min(static_cast<std::size_t>(count), kLargestMessage - text.size()));
  }
}

// The first line names the fault, those below it give advice.
std::string firstLine(const std::string& text) {
  return text.substr(0, text.find('\n'));
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
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return systemError(tool_);
  const Descriptor readEnd(ends[0]);
  Descriptor writeEnd(ends[1]);
  child->errors = writeEnd.get();
  const Result<pid_t> started = startChild(*child);
  if (!started) return started.error();
  // The child has the last one then, so that reading ends with it.
  writeEnd = Descriptor();

  const std::optional<std::string> said = readUntil(steady_clock::now() + limit_, readEnd.get());
  if (!said) kill(*started, SIGKILL);
  int status = 0;
  uninterrupted([&] { return waitpid(*started, &status, 0); });
  if (!said) return errorWithText(std::errc::timed_out, tool_, "no answer from the user's service manager");
  if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return {};
  return errorWithText(std::errc::io_error, tool_, said->empty() ? "failed" : firstLine(*said));
}

}  // namespace vantory
