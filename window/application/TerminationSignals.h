// The end of the program when the session, or a person at a terminal, ends it by a signal.
#pragma once

#include <QSocketNotifier>
#include <array>
#include <functional>
#include <memory>

namespace vantory {

// While it exists the first such signal is reported between two events; a second one ends the process at once. One at a
// time, on the main thread.
class TerminationSignals {
 public:
  explicit TerminationSignals(std::function<void()> end);
  ~TerminationSignals();
  TerminationSignals(const TerminationSignals&) = delete;
  TerminationSignals& operator=(const TerminationSignals&) = delete;

 private:
  std::array<int, 2> pipe_{-1, -1};
  std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace vantory
