// The signals by which the session, or a person at a terminal, ends the program.
#pragma once

namespace vantory {

// One at a time, on the main thread.
class TerminationSignals {
 public:
  virtual ~TerminationSignals() = default;

  // From now on the first such signal has something to be read at the descriptor that this answers; a second one ends
  // the process at once. -1, and all is as before, where signals cannot be reported.
  virtual int startReporting() = 0;
  // From now on the first one ends the process.
  virtual void stopReporting() = 0;
};

}  // namespace vantory
