// Work that belongs on the main thread.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

namespace vantory {

// The main thread is the one that makes the Runtime's instance of this class first, in main(). Work handed over from
// elsewhere runs when the main thread waits here; a front end with an event loop of its own sets `wake` and calls
// runPending() from that loop.
class MainThread {
 public:
  MainThread();

  static MainThread& shared();

  bool isCurrent() const;
  // Runs the work at once on the main thread, else hands it over and blocks until it has run. False when it never will,
  // because the program is ending.
  bool runAndWait(const std::function<void()>& work);
  // Hands the work over and returns; on the main thread too it runs only later. False when it never will.
  bool post(std::function<void()> work);
  // Called on the main thread: runs work as it comes until `done` answers true. Whoever makes `done` true off the main
  // thread calls notify().
  void runUntil(const std::function<bool()>& done);
  void notify();
  // Called on the main thread: runs what is waiting and returns.
  void runPending();
  // Called on the main thread: what waits, and all that comes later, is refused.
  void shutDown();

  // Tells an event loop that work is waiting. Called from any thread; may be empty.
  std::function<void()> wake;

 private:
  struct Job {
    std::function<void()> work;
    bool finished = false;
    bool refused = false;
  };

  // Null when the program is ending.
  std::shared_ptr<Job> enqueue(std::function<void()> work);
  void runNextJob(std::unique_lock<std::mutex>& lock);

  const std::thread::id thread_ = std::this_thread::get_id();
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::shared_ptr<Job>> jobs_;  // those not begun
  std::uint64_t notices_ = 0;              // calls of notify()
  bool shutDown_ = false;
};

}  // namespace vantory
