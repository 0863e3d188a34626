// The system calls behind becoming, awaiting and preparing processes.
#include "platform/posix/processes/ProcessCalls.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <initializer_list>
#include <thread>

#include "platform/posix/files/Errors.h"

namespace vantory {

namespace {

constexpr std::chrono::milliseconds kFirstPause{1};
constexpr std::chrono::milliseconds kLongestPause{20};

}  // namespace

Status replaceProgram(const std::string& program, const std::vector<std::string>& arguments) {
  if (!program.starts_with('/')) return systemError(program, EINVAL);
  std::vector<char*> list;
  list.reserve(arguments.size() + 1);
  for (const std::string& argument : arguments) list.push_back(const_cast<char*>(argument.c_str()));
  list.push_back(nullptr);
  ::execv(program.c_str(), list.data());
  return systemError(program);
}

void fillStandardStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    if (fcntl(stream, F_GETFD) < 0) (void)open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
}

void ignoreFailedWrites() {
  for (const int signal : {SIGXFSZ, SIGPIPE}) std::signal(signal, SIG_IGN);
}

int endOf(int waitStatus) {
  constexpr int kSignalled = 128;
  return WIFEXITED(waitStatus) ? WEXITSTATUS(waitStatus) : kSignalled + WTERMSIG(waitStatus);
}

// No call waits for a child with a limit, so it is asked for, less and less often.
std::optional<int> waitForChild(pid_t child, std::chrono::milliseconds limit) {
  const auto end = std::chrono::steady_clock::now() + limit;
  for (auto pause = kFirstPause;; pause = std::min(pause * 2, kLongestPause)) {
    int status = 0;
    if (waitpid(child, &status, WNOHANG) == child) return endOf(status);
    if (std::chrono::steady_clock::now() >= end) return std::nullopt;
    std::this_thread::sleep_for(pause);
  }
}

}  // namespace vantory
