// Work for the main thread, done by Qt's event loop.
#pragma once

#include <QObject>

namespace vantory {

class MainThread;

// While it exists, work handed to the main thread is run between two events. Made on the main thread before any other
// thread is started, and outlives them.
class MainThreadEvents {
 public:
  explicit MainThreadEvents(MainThread& mainThread);
  ~MainThreadEvents();
  MainThreadEvents(const MainThreadEvents&) = delete;
  MainThreadEvents& operator=(const MainThreadEvents&) = delete;

 private:
  MainThread& mainThread_;
  QObject context_;  // events that are still waiting go with it
};

}  // namespace vantory
