// Work on other threads: for itself, one after the other, and shared out.
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

  // A look changes nothing and can be given up: the program may be left, and files opened, meanwhile.
  enum class Kind { Task, Look };

  // Runs the work on a thread of its own. Work that throws is logged and ends. False when the system has no thread to
  // give; the log says so.
  bool start(std::function<void()> work, Kind kind = Kind::Task);
  // True while any work runs that is more than a look.
  bool isWorking() const;
  // Runs this on the main thread as soon as nothing but looks runs. What waits is run in order, one at a time: work
  // that it starts holds up the rest.
  void whenIdle(std::function<void()> work);
  // Called on the main thread: serves what the work asks of it until all has ended, also what waits for that.
  void waitForAll();

 private:
  void run(const std::function<void()>& work, Kind kind);
  void workEnded(Kind kind);
  void callWaiting();
  void runWaiting();
  std::function<void()> takeWaiting();

  mutable std::mutex mutex_;
  std::size_t tasks_ = 0;
  std::size_t looks_ = 0;
  std::deque<std::function<void()>> waiting_;  // for idleness
  bool servingWaiting_ = false;                // main thread
};

// Work that must not be done at the same time. Outlives the BackgroundThreads that do its work.
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

// Calls work(0) to work(count - 1), in any order, on this thread and a few more where they are to be had; returns when
// all have run. The work must not throw.
void forEachInParallel(std::size_t count, const std::function<void(std::size_t)>& work);

}  // namespace vantory
