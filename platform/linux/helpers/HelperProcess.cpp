// Starts helper programs and ends them.
#include "platform/linux/helpers/HelperProcess.h"

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <thread>
#include <utility>

#include "platform/posix/files/Descriptor.h"

namespace vantory {

namespace {

constexpr std::chrono::milliseconds kPause{1};
// For what a helper still has to do at the end of its conversation.
constexpr std::chrono::seconds kPatience{2};

// True also where somebody else has collected it.
bool hasEnded(pid_t child) {
  return uninterrupted([&] { return waitpid(child, nullptr, WNOHANG); }) != 0;
}

}  // namespace

Result<HelperProcess> HelperProcess::start(ChildProgram program) {
  Result<Channel::Ends> ends = Channel::pair();
  if (!ends) return ends.error();
  program.input = ends->other.descriptor();
  const Result<pid_t> child = startChild(program);
  if (!child) return child.error();
  return HelperProcess(*child, std::move(ends->own));
}

HelperProcess::HelperProcess(HelperProcess&& other) noexcept
    : child_(std::exchange(other.child_, -1)), channel_(std::move(other.channel_)) {}

HelperProcess::~HelperProcess() {
  if (child_ < 0) return;
  // A helper that works ends with its input.
  channel_ = Channel(Descriptor());
  const auto limit = std::chrono::steady_clock::now() + kPatience;
  while (!hasEnded(child_)) {
    if (std::chrono::steady_clock::now() > limit && kill(child_, SIGKILL) == 0) {
      uninterrupted([&] { return waitpid(child_, nullptr, 0); });
      return;
    }
    // One that runs as somebody else is left alone.
    if (std::chrono::steady_clock::now() > limit) return;
    std::this_thread::sleep_for(kPause);
  }
}

}  // namespace vantory
