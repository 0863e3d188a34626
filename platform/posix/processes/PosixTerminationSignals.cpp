// Termination signals: the handler writes one byte into a pipe.
#include "platform/posix/processes/PosixTerminationSignals.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <utility>

#include "platform/posix/kernel/Kernel.h"

namespace vantory {

namespace {

constexpr std::array kSignals = {SIGTERM, SIGINT, SIGHUP};
// The pipe's writing end, where the handler finds it.
volatile std::sig_atomic_t reportTo = -1;

// The handler: only few calls are allowed here.
void report(int) {
  const char byte = 0;
  if (write(reportTo, &byte, 1) != 1) _exit(1);
}

// Whoever started the program may have it ignore some.
bool isIgnored(int signal) {
  struct sigaction action {};
  return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

void setHandlers(void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  // It serves once; a second signal does what signals do.
  action.sa_flags = static_cast<int>(SA_RESTART | SA_RESETHAND);
  for (const int signal : kSignals)
    if (!isIgnored(signal)) sigaction(signal, &action, nullptr);
}

}  // namespace

PosixTerminationSignals::~PosixTerminationSignals() {
  stopReporting();
}

int PosixTerminationSignals::startReporting() {
  kernel::Pipe pipe;
  if (kernel::openPipe(pipe) != 0) return -1;
  for (const Descriptor* end : {&pipe.readEnd, &pipe.writeEnd})
    if (fcntl(end->get(), F_SETFL, O_NONBLOCK) != 0) return -1;
  read_ = std::move(pipe.readEnd);
  write_ = std::move(pipe.writeEnd);
  reportTo = write_.get();
  setHandlers(report);
  return read_.get();
}

void PosixTerminationSignals::stopReporting() {
  if (!read_.valid()) return;
  setHandlers(SIG_DFL);
  read_ = {};
  write_ = {};
}

}  // namespace vantory
