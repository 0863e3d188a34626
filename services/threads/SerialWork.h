// Work that a window must not wait for, and that must not be done at the same time.
#pragma once

#include <deque>
#include <functional>
#include <mutex>

namespace vantory {

// Outlives the BackgroundThreads that do its work.
class SerialWork {
 public:
  // Where the tasks that read or replace preference files or the library take turns: each finds what the one before
  // has left. Any thread.
  static SerialWork& tasks();

  // Runs the work on a background thread once all that was handed over before has ended. Work that throws is logged.
  // False when the system has no thread to give; it is not done then. Any thread.
  bool add(std::function<void()> work);

 private:
  void workOff();
  std::function<void()> takeNext();

  std::mutex mutex_;
  std::deque<std::function<void()>> waiting_;
  bool working_ = false;
};

}  // namespace vantory
