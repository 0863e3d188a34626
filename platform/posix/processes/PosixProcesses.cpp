// Runs tools, reads what they print, and waits for them.
#include "platform/posix/processes/PosixProcesses.h"

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/posix/files/Descriptor.h"
#include "platform/posix/files/Errors.h"
#include "platform/posix/processes/ChildProgram.h"

namespace vantory {

namespace {

constexpr std::size_t kChunkBytes = 64 * 1024;
constexpr int kUnknownStatus = -1;  // somebody else collected the child

// As shells tell it.
int exitStatus(int waitStatus) {
  return WIFSIGNALED(waitStatus) ? 128 + WTERMSIG(waitStatus) : WEXITSTATUS(waitStatus);
}

// Adds what can be read to the text, blocking until there is something; false at the end.
bool readChunk(int stream, std::string& text) {
  std::array<char, kChunkBytes> chunk;
  const ssize_t count = uninterrupted([&] { return read(stream, chunk.data(), chunk.size()); });
  if (count <= 0) return false;
  text.append(chunk.data(), static_cast<std::size_t>(count));
  return true;
}

// A child that nobody waits for stays in the table of processes when it has ended.
void collectLater(pid_t child) {
  const auto collect = [child] { uninterrupted([&] { return waitpid(child, nullptr, 0); }); };
  try {
    std::thread(collect).detach();
  } catch (const std::system_error&) {
    // No thread to be had: the child stays a zombie until this program ends.
  }
}

}  // namespace

PosixProcess::~PosixProcess() {
  collect(WNOHANG);
  if (!status_) collectLater(child_);
}

int PosixProcess::wait() {
  {
    const std::lock_guard lock(mutex_);
    if (status_) return *status_;
  }
  // Not collected yet, so that terminate() meanwhile cannot hit another process with the same number.
  kernel::awaitEnd(child_);
  const std::lock_guard lock(mutex_);
  collect(0);
  return *status_;
}

// Both streams together: a child that fills one of them waits until it is read.
Process::Output PosixProcess::readAll() {
  Output result;
  std::array<pollfd, 3> streams{pollfd{ends_.output.get(), POLLIN, 0}, pollfd{ends_.errors.get(), POLLIN, 0},
                                pollfd{ends_.stop.readEnd.get(), POLLIN, 0}};
  const std::array<std::string*, 2> texts{&result.output, &result.errors};
  while (streams[0].fd >= 0 || streams[1].fd >= 0) {
    if (uninterrupted([&] { return poll(streams.data(), streams.size(), -1); }) < 0) break;
    for (std::size_t i = 0; i < texts.size(); ++i)
      if (streams[i].revents != 0 && !readChunk(streams[i].fd, *texts[i])) streams[i].fd = -1;
    if (streams[2].revents != 0) break;  // a pipe holds no more than one chunk
  }
  return result;
}

std::string PosixProcess::readSome() {
  std::string chunk;
  std::array<pollfd, 2> events{pollfd{ends_.output.get(), POLLIN, 0}, pollfd{ends_.stop.readEnd.get(), POLLIN, 0}};
  if (!ends_.output.valid() || uninterrupted([&] { return poll(events.data(), events.size(), -1); }) < 0) return chunk;
  if (events[1].revents == 0) readChunk(ends_.output.get(), chunk);
  return chunk;
}

void PosixProcess::stopReading() {
  if (ends_.stop.writeEnd.valid()) (void)!write(ends_.stop.writeEnd.get(), "", 1);
}

bool PosixProcess::isRunning() {
  const std::lock_guard lock(mutex_);
  collect(WNOHANG);
  return !status_;
}

// Never after the child was collected, when its number may be another's.
void PosixProcess::terminate() {
  const std::lock_guard lock(mutex_);
  collect(WNOHANG);
  if (!status_) kill(child_, SIGTERM);
}

// Under the lock.
void PosixProcess::collect(int options) {
  if (status_) return;
  int status = 0;
  const pid_t collected = uninterrupted([&] { return waitpid(child_, &status, options); });
  if (collected == child_)
    status_ = exitStatus(status);
  else if (collected < 0)
    status_ = kUnknownStatus;
}

Result<std::unique_ptr<Process>> PosixProcesses::start(const std::string& program,
                                                       const std::vector<std::string>& arguments, Streams streams) {
  kernel::Pipe output;
  kernel::Pipe errors;
  kernel::Pipe stop;
  int number = streams != Streams::Discarded ? kernel::openPipe(output) : 0;
  if (number == 0 && streams != Streams::Discarded) number = kernel::openPipe(stop);
  if (number == 0 && streams == Streams::Captured) number = kernel::openPipe(errors);
  if (number != 0) return systemError(program, number);
  const Result<pid_t> child = startChild({.path = program,
                                          .arguments = arguments,
                                          .environment = cleanEnvironment(),
                                          .output = output.writeEnd.get(),
                                          .errors = errors.writeEnd.get()});
  if (!child) return child.error();
  return std::unique_ptr<Process>(std::make_unique<PosixProcess>(
      *child, PosixProcess::Ends{std::move(output.readEnd), std::move(errors.readEnd), std::move(stop)}));
}

}  // namespace vantory
