// Threads for work that a window must not wait for.
#pragma once

#include <condition_variable>
#include <cstddef>
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
  // Called on the main thread: serves what the work asks of it until all has ended.
  void waitForAll();

 private:
  void run(const std::function<void()>& work);

  mutable std::mutex mutex_;
  std::size_t running_ = 0;
};

}  // namespace vantory
