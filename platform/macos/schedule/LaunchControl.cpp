// Loads jobs, and takes them back when none of their runs is cut off.
#include "platform/macos/schedule/LaunchControl.h"

#include <algorithm>
#include <thread>

#include "platform/macos/darwin/Darwin.h"
#include "platform/posix/files/Errors.h"
#include "platform/posix/processes/ToolRun.h"

namespace vantory {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds kPause{100};
// What the tool ends with where there is no such job.
constexpr int kNoSuchProcess = 3;
constexpr int kNoSuchService = 113;

std::string session(uid_t user) {
  return "gui/" + std::to_string(user);
}

bool meansNotLoaded(const ToolEnd& end) {
  return end.status == kNoSuchProcess || end.status == kNoSuchService;
}

}  // namespace

std::string LaunchControl::target(uid_t user, const std::string& label) {
  return session(user) + "/" + label;
}

Result<ToolEnd> LaunchControl::launchctl(std::vector<std::string> arguments) const {
  return runTool({.path = darwin::toolPath("/bin/launchctl"),
                  .arguments = std::move(arguments),
                  .environment = cleanEnvironment()},
                 limit_);
}

Status LaunchControl::load(uid_t user, const std::string& file) const {
  const Result<ToolEnd> end = launchctl({"bootstrap", session(user), file});
  if (!end) return end.error();
  return end->status == 0 ? Status() : errorWithText(std::errc::io_error, file, faultOf(*end));
}

// A run has a process; of the lines that tell of it only the job's own are indented once.
Result<LaunchControl::State> LaunchControl::stateOf(const std::string& target) const {
  const Result<ToolEnd> end = launchctl({"print", target});
  if (!end) return end.error();
  if (meansNotLoaded(*end)) return State::Missing;
  if (end->status != 0) return errorWithText(std::errc::io_error, target, faultOf(*end));
  return end->output.find("\n\tpid = ") == std::string::npos ? State::Waiting : State::Running;
}

// The tool returns before the job is gone, and one of its name cannot be loaded until then.
Status LaunchControl::unload(uid_t user, const std::string& label) const {
  const std::string job = target(user, label);
  const auto end = steady_clock::now() + patience_;
  const auto until = [&](auto isReached) -> Result<State> {
    for (;;) {
      const Result<State> state = stateOf(job);
      if (!state || isReached(*state) || steady_clock::now() >= end) return state;
      std::this_thread::sleep_for(kPause);
    }
  };
  Result<State> state = until([](State now) { return now != State::Running; });
  if (!state || *state == State::Missing) return state.status();
  if (*state == State::Running)
    return errorWithText(std::errc::device_or_resource_busy, label,
                         "a run of it goes on; it stays until the next login");
  const Result<ToolEnd> taken = launchctl({"bootout", job});
  if (!taken) return taken.error();
  if (taken->status != 0 && !meansNotLoaded(*taken)) return errorWithText(std::errc::io_error, label, faultOf(*taken));
  state = until([](State now) { return now == State::Missing; });
  if (!state || *state == State::Missing) return state.status();
  return errorWithText(std::errc::timed_out, label, "is still loaded");
}

}  // namespace vantory
