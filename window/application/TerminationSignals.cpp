#include "window/application/TerminationSignals.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <utility>

namespace vantory {

namespace {

constexpr std::array kSignals = {SIGTERM, SIGINT, SIGHUP};
volatile std::sig_atomic_t reportTo = -1;

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
  action.sa_flags = static_cast<int>(SA_RESTART | SA_RESETHAND);
  for (const int signal : kSignals)
    if (!isIgnored(signal)) sigaction(signal, &action, nullptr);
}

}  // namespace

TerminationSignals::TerminationSignals(std::function<void()> end) {
  if (pipe2(pipe_.data(), O_CLOEXEC | O_NONBLOCK) != 0) return;
  notifier_ = std::make_unique<QSocketNotifier>(pipe_[0], QSocketNotifier::Read);
  QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [this, end = std::move(end)] {
    notifier_->setEnabled(false);
    end();
  });
  reportTo = pipe_[1];
  setHandlers(report);
}

TerminationSignals::~TerminationSignals() {
  if (!notifier_) return;
  setHandlers(SIG_DFL);
  for (const int end : pipe_) close(end);
}

}  // namespace vantory
