#include "platform/posix/processes/ProcessCalls.h"

#include <sys/wait.h>

#include <algorithm>
#include <thread>

namespace vantory {

namespace {

constexpr int kSignalled = 128;
constexpr std::chrono::milliseconds kFirstPause{1};
constexpr std::chrono::milliseconds kLongestPause{20};

}  // namespace

std::optional<int> waitForChild(pid_t child, std::chrono::milliseconds limit) {
  const auto end = std::chrono::steady_clock::now() + limit;
  for (auto pause = kFirstPause;; pause = std::min(pause * 2, kLongestPause)) {
    int status = 0;
    if (waitpid(child, &status, WNOHANG) == child)
      return WIFEXITED(status) ? WEXITSTATUS(status) : kSignalled + WTERMSIG(status);
    if (std::chrono::steady_clock::now() >= end) return std::nullopt;
    std::this_thread::sleep_for(pause);
  }
}

}  // namespace vantory
