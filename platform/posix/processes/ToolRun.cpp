// Reads what a tool says until it ends or the time is over.
#include "platform/posix/processes/ToolRun.h"

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>

#include "platform/posix/files/Descriptor.h"
#include "platform/posix/files/Errors.h"
#include "platform/posix/kernel/Kernel.h"
#include "platform/posix/processes/ProcessCalls.h"

namespace vantory {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds kPatienceAtEnd{100};
constexpr std::size_t kLongestText = 64 * 1024;

// Adds what can be read to the text, as far as it has room; false at the end.
bool readSome(int stream, std::string& text) {
  std::array<char, 4096> chunk{};
  const ssize_t count = uninterrupted([&] { return read(stream, chunk.data(), chunk.size()); });
  if (count <= 0) return false;
  text.append(chunk.data(), std::min(static_cast<std::size_t>(count), kLongestText - text.size()));
  return true;
}

// False when the time is over before both streams have ended.
bool readBoth(int output, int errors, steady_clock::time_point end, ToolEnd& said) {
  std::array<pollfd, 2> streams{pollfd{output, POLLIN, 0}, pollfd{errors, POLLIN, 0}};
  const std::array<std::string*, 2> texts{&said.output, &said.errors};
  while (streams[0].fd >= 0 || streams[1].fd >= 0) {
    const auto left = std::chrono::ceil<milliseconds>(end - steady_clock::now()).count();
    if (left <= 0) return false;
    if (uninterrupted([&] { return poll(streams.data(), streams.size(), static_cast<int>(left)); }) <= 0) continue;
    for (std::size_t i = 0; i < streams.size(); ++i)
      if (streams[i].fd >= 0 && streams[i].revents != 0 && !readSome(streams[i].fd, *texts[i])) streams[i].fd = -1;
  }
  return true;
}

}  // namespace

// Both pipes end with the child: it has the last writing ends.
Result<ToolEnd> runTool(ChildProgram tool, milliseconds limit) {
  kernel::Pipe output;
  kernel::Pipe errors;
  int number = kernel::openPipe(output);
  if (number == 0) number = kernel::openPipe(errors);
  if (number != 0) return systemError(tool.path, number);
  tool.output = output.writeEnd.get();
  tool.errors = errors.writeEnd.get();
  const Result<pid_t> started = startChild(tool);
  if (!started) return started.error();
  output.writeEnd = Descriptor();
  errors.writeEnd = Descriptor();

  ToolEnd end;
  const auto deadline = steady_clock::now() + limit;
  const bool saidAll = readBoth(output.readEnd.get(), errors.readEnd.get(), deadline, end);
  const auto left = std::chrono::ceil<milliseconds>(deadline - steady_clock::now());
  const auto status = saidAll ? waitForChild(*started, std::max(left, kPatienceAtEnd)) : std::nullopt;
  if (!status) {
    // One that waits in the kernel may never end.
    kill(*started, SIGKILL);
    waitForChild(*started, kPatienceAtEnd);
    return errorWithText(std::errc::timed_out, tool.path, "no answer in time");
  }
  end.status = *status;
  return end;
}

// The lines below the first give advice.
std::string faultOf(const ToolEnd& end) {
  return end.errors.empty() ? "failed" : end.errors.substr(0, end.errors.find('\n'));
}

}  // namespace vantory
