// Runs tools, reads what they print, and waits for them.
#include "platform/linux/processes/LinuxProcesses.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/linux/processes/ChildProgram.h"
#include "platform/posix/files/Descriptor.h"
#include "platform/posix/files/Errors.h"

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

struct Pipe {
  Descriptor readEnd;
  Descriptor writeEnd;
};

// 0, or the error's number.
int openPipe(Pipe& pipe) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return errno;
  pipe.readEnd = Descriptor(ends[0]);
  pipe.writeEnd = Descriptor(ends[1]);
  return 0;
}

// A write to it ends another thread's poll().
int openEventCounter(Descriptor& counter) {
  counter = Descriptor(eventfd(0, EFD_CLOEXEC));
  return counter.valid() ? 0 : errno;
}

}  // namespace

LinuxProcess::~LinuxProcess() {
  collectIfEnded();
  if (!status_) collectLater(child_);
}

int LinuxProcess::wait() {
  {
    const std::lock_guard lock(mutex_);
    if (status_) return *status_;
  }
  // Not collected yet, so that terminate() meanwhile cannot hit another process with the same number.
  siginfo_t ended{};
  uninterrupted([&] { return waitid(P_PID, static_cast<id_t>(child_), &ended, WEXITED | WNOWAIT); });
  const std::lock_guard lock(mutex_);
  collectIfEnded();
  return status_.value_or(kUnknownStatus);
}

// Both streams together: a child that fills one of them waits until it is read.
Process::Output LinuxProcess::readAll() {
  Output result;
  std::array<pollfd, 3> streams{pollfd{ends_.output.get(), POLLIN, 0}, pollfd{ends_.errors.get(), POLLIN, 0},
                                pollfd{ends_.stop.get(), POLLIN, 0}};
  const std::array<std::string*, 2> texts{&result.output, &result.errors};
  while (streams[0].fd >= 0 || streams[1].fd >= 0) {
    if (uninterrupted([&] { return poll(streams.data(), streams.size(), -1); }) < 0) break;
    for (std::size_t i = 0; i < texts.size(); ++i)
      if (streams[i].revents != 0 && !readChunk(streams[i].fd, *texts[i])) streams[i].fd = -1;
    if (streams[2].revents != 0) break;  // a pipe holds no more than one chunk
  }
  return result;
}

std::string LinuxProcess::readSome() {
  std::string chunk;
  std::array<pollfd, 2> events{pollfd{ends_.output.get(), POLLIN, 0}, pollfd{ends_.stop.get(), POLLIN, 0}};
  if (!ends_.output.valid() || uninterrupted([&] { return poll(events.data(), events.size(), -1); }) < 0) return chunk;
  if (events[1].revents == 0) readChunk(ends_.output.get(), chunk);
  return chunk;
}

void LinuxProcess::stopReading() {
  if (ends_.stop.valid()) eventfd_write(ends_.stop.get(), 1);
}

bool LinuxProcess::isRunning() {
  const std::lock_guard lock(mutex_);
  collectIfEnded();
  return !status_;
}

// Never after the child was collected, when its number may be another's.
void LinuxProcess::terminate() {
  const std::lock_guard lock(mutex_);
  collectIfEnded();
  if (!status_) kill(child_, SIGTERM);
}

// Under the lock.
void LinuxProcess::collectIfEnded() {
  if (status_) return;
  int status = 0;
  const pid_t collected = waitpid(child_, &status, WNOHANG);
  if (collected == child_)
    status_ = exitStatus(status);
  else if (collected < 0)
    status_ = kUnknownStatus;
}

Result<std::unique_ptr<Process>> LinuxProcesses::start(const std::string& program,
                                                       const std::vector<std::string>& arguments, Streams streams) {
  Pipe output;
  Pipe errors;
  Descriptor stop;
  int number = streams != Streams::Discarded ? openPipe(output) : 0;
  if (number == 0 && streams != Streams::Discarded) number = openEventCounter(stop);
  if (number == 0 && streams == Streams::Captured) number = openPipe(errors);
  if (number != 0) return systemError(program, number);
  const Result<pid_t> child = startChild({.path = program,
                                          .arguments = arguments,
                                          .environment = cleanEnvironment(),
                                          .output = output.writeEnd.get(),
                                          .errors = errors.writeEnd.get()});
  if (!child) return child.error();
  return std::unique_ptr<Process>(std::make_unique<LinuxProcess>(
      *child, LinuxProcess::Ends{std::move(output.readEnd), std::move(errors.readEnd), std::move(stop)}));
}

}  // namespace vantory
