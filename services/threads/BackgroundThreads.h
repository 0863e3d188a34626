// Threads for work that a window must not wait for.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>

namespace vantory {

// One for the process. Any thread.
class BackgroundThreads {
 public:
  static BackgroundThreads& shared();

  // Runs the work on a thread of its own. Work that throws is logged and ends. False when the system has no thread to
  // give; the log says so.
  bool start(std::function<void()> work);
  // True while any work runs.
  bool isWorking() const;
  // Runs this on the main thread as soon as no work runs. What waits is run in order, one at a time: work that it
  // starts holds up the rest.
  void whenIdle(std::function<void()> work);
  // Called on the main thread: serves what the work asks of it until all has ended, also what waits for that.
  void waitForAll();

 private:
  void run(const std::function<void()>& work);
  void workEnded();
  void callWaiting();
  void runWaiting();
  std::function<void()> takeWaiting();

  mutable std::mutex mutex_;
  std::size_t running_ = 0;
  std::deque<std::function<void()>> waiting_;  // for idleness
  bool servingWaiting_ = false;                // main thread
};

}  // namespace vantory
