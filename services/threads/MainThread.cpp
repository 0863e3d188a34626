// A queue that the main thread serves while it waits.
#include "services/threads/MainThread.h"

#include <utility>

#include "services/Runtime.h"

namespace vantory {

MainThread::MainThread() = default;

MainThread& MainThread::shared() {
  return Runtime::current().shared<MainThread>();
}

bool MainThread::isCurrent() const {
  return std::this_thread::get_id() == thread_;
}

// The work belongs to the caller, who waits until nobody uses it.
bool MainThread::runAndWait(const std::function<void()>& work) {
  if (isCurrent()) {
    work();
    return true;
  }
  const auto job = enqueue(std::cref(work));
  if (!job) return false;
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [&job] { return job->finished || job->refused; });
  return job->finished;
}

bool MainThread::post(std::function<void()> work) {
  return enqueue(std::move(work)) != nullptr;
}

// The notices are counted, so that one which comes while `done` is asked is not slept through.
void MainThread::runUntil(const std::function<bool()>& done) {
  std::unique_lock lock(mutex_);
  for (;;) {
    const std::uint64_t seen = notices_;
    lock.unlock();
    if (done()) return;
    lock.lock();
    changed_.wait(lock, [this, seen] { return notices_ != seen || !jobs_.empty(); });
    if (!jobs_.empty()) runNextJob(lock);
  }
}

void MainThread::notify() {
  const std::lock_guard lock(mutex_);
  ++notices_;
  changed_.notify_all();
}

void MainThread::runPending() {
  std::unique_lock lock(mutex_);
  while (!jobs_.empty()) runNextJob(lock);
}

void MainThread::shutDown() {
  std::deque<std::shared_ptr<Job>> refused;  // outlives the lock: what the work holds may need it when it goes
  const std::lock_guard lock(mutex_);
  shutDown_ = true;
  refused.swap(jobs_);
  for (const auto& job : refused) job->refused = true;
  changed_.notify_all();
}

// An event loop is woken without the lock: it may come for the work at once.
std::shared_ptr<MainThread::Job> MainThread::enqueue(std::function<void()> work) {
  auto job = std::make_shared<Job>();
  job->work = std::move(work);
  {
    const std::lock_guard lock(mutex_);
    if (shutDown_) return nullptr;
    jobs_.push_back(job);
    changed_.notify_all();
  }
  if (wake) wake();
  return job;
}

// The lock is given up while the work runs. What the work holds is let go before it counts as finished.
void MainThread::runNextJob(std::unique_lock<std::mutex>& lock) {
  const std::shared_ptr<Job> job = std::move(jobs_.front());
  jobs_.pop_front();
  lock.unlock();
  job->work();
  job->work = nullptr;
  lock.lock();
  job->finished = true;
  changed_.notify_all();
}

}  // namespace vantory
