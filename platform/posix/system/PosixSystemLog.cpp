// Writes to syslog and to standard error.
#include "platform/posix/system/PosixSystemLog.h"

#include <fcntl.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <string>

#include "platform/posix/files/Descriptor.h"
#include "platform/posix/kernel/Kernel.h"

namespace vantory {

namespace {

// Holds back the signal that a write to a pipe without a reader would end the program with.
class BrokenPipeIgnored {
 public:
  BrokenPipeIgnored() {
    sigemptyset(&signal_);
    sigaddset(&signal_, SIGPIPE);
    sigset_t pending;
    sigpending(&pending);
    wasPending_ = sigismember(&pending, SIGPIPE) == 1;
    pthread_sigmask(SIG_BLOCK, &signal_, &previous_);
  }
  ~BrokenPipeIgnored() {
    if (!wasPending_) kernel::takePending(signal_);
    pthread_sigmask(SIG_SETMASK, &previous_, nullptr);
  }
  BrokenPipeIgnored(const BrokenPipeIgnored&) = delete;
  BrokenPipeIgnored& operator=(const BrokenPipeIgnored&) = delete;

 private:
  sigset_t signal_;
  sigset_t previous_;
  bool wasPending_;
};

void writeToStandardError(std::string_view line) {
  const BrokenPipeIgnored guard;
  while (!line.empty()) {
    const ssize_t written = uninterrupted([&] { return ::write(STDERR_FILENO, line.data(), line.size()); });
    if (written <= 0) return;
    line.remove_prefix(static_cast<std::size_t>(written));
  }
}

// So that a line break in a file's name begins no entry of its own.
std::string onOneLine(std::string_view message) {
  std::string line(message);
  std::replace_if(
      line.begin(), line.end(), [](char c) { return c == '\n' || c == '\r' || c == '\0'; }, ' ');
  return line;
}

}  // namespace

// Looked at once: what is opened later may get the number of a stream that is missing.
PosixSystemLog::PosixSystemLog() : hasStandardError_(fcntl(STDERR_FILENO, F_GETFD) != -1) {
  openlog("Vantory", LOG_ODELAY, LOG_USER);
}

void PosixSystemLog::write(std::string_view message) {
  const std::string line = onOneLine(message);
  syslog(LOG_NOTICE, "%s", line.c_str());
  if (!hasStandardError_) return;
  beforeLine_();
  writeToStandardError("Vantory: " + line + "\n");
}

void PosixSystemLog::record(std::string_view message) {
  syslog(LOG_NOTICE, "%s", onOneLine(message).c_str());
}

}  // namespace vantory
