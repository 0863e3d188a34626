// Starts threads, and keeps count of them.
#include "services/threads/BackgroundThreads.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <future>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "services/Runtime.h"
#include "services/log/QWException.h"
#include "services/log/QWLog.h"
#include "services/threads/MainThread.h"

namespace vantory {

BackgroundThreads& BackgroundThreads::shared() {
  return Runtime::current().shared<BackgroundThreads>();
}

// Counted before the thread runs, so that nobody takes the program for idle in between.
bool BackgroundThreads::start(std::function<void()> work, Kind kind) {
  {
    const std::lock_guard lock(mutex_);
    ++(kind == Kind::Task ? tasks_ : looks_);
  }
  try {
    std::thread([this, work = std::move(work), kind] { run(work, kind); }).detach();
    return true;
  } catch (const std::system_error& error) {
    QWLog::appendLog("Unable to start a task: %@", error.what());
  }
  workEnded(kind);
  return false;
}

// The whole life of a thread.
void BackgroundThreads::run(const std::function<void()>& work, Kind kind) {
  try {
    work();
  } catch (const std::exception& exception) {
    QWException::logException(exception, "BackgroundThreads");
  }
  workEnded(kind);
}

// Whoever waits may destroy this object as soon as the lock is given up.
void BackgroundThreads::workEnded(Kind kind) {
  const std::lock_guard lock(mutex_);
  --(kind == Kind::Task ? tasks_ : looks_);
  callWaiting();
  MainThread::shared().notify();
}

void BackgroundThreads::whenIdle(std::function<void()> work) {
  const std::lock_guard lock(mutex_);
  waiting_.push_back(std::move(work));
  callWaiting();
}

// Under the lock.
void BackgroundThreads::callWaiting() {
  if (tasks_ == 0 && !waiting_.empty()) MainThread::shared().post([this] { runWaiting(); });
}

// What is run may serve events of its own, such as a question's, and so come here again.
void BackgroundThreads::runWaiting() {
  if (servingWaiting_) return;
  servingWaiting_ = true;
  while (const auto work = takeWaiting()) work();
  servingWaiting_ = false;
}

// Empty as long as work runs, and when nothing waits.
std::function<void()> BackgroundThreads::takeWaiting() {
  const std::lock_guard lock(mutex_);
  if (tasks_ > 0 || waiting_.empty()) return nullptr;
  auto work = std::move(waiting_.front());
  waiting_.pop_front();
  return work;
}

bool BackgroundThreads::isWorking() const {
  const std::lock_guard lock(mutex_);
  return tasks_ > 0;
}

// Serves the main thread's queue meanwhile: the work may wait for it.
void BackgroundThreads::waitForAll() {
  MainThread::shared().runUntil([this] {
    const std::lock_guard lock(mutex_);
    return tasks_ == 0 && looks_ == 0 && waiting_.empty();
  });
}

SerialWork& SerialWork::tasks() {
  return Runtime::current().shared<SerialWork>();
}

// Without a thread nothing that waits would ever be done, so all of it is given up.
bool SerialWork::add(std::function<void()> work) {
  const std::lock_guard lock(mutex_);
  waiting_.push_back(std::move(work));
  if (working_) return true;
  working_ = BackgroundThreads::shared().start([this] { workOff(); });
  if (!working_) waiting_.clear();
  return working_;
}

void SerialWork::workOff() {
  while (const auto work = takeNext()) {
    try {
      work();
    } catch (const std::exception& exception) {
      QWException::logException(exception, "SerialWork");
    }
  }
}

// Empty when the thread is to end; decided under the lock, so that what is added later gets a thread of its own.
std::function<void()> SerialWork::takeNext() {
  const std::lock_guard lock(mutex_);
  working_ = !waiting_.empty();
  if (!working_) return nullptr;
  std::function<void()> work = std::move(waiting_.front());
  waiting_.pop_front();
  return work;
}

void forEachInParallel(std::size_t count, const std::function<void(std::size_t)>& work) {
  constexpr unsigned kMostThreads = 4;
  std::atomic<std::size_t> next = 0;
  // Each thread takes the next index until there is none.
  const auto run = [&] {
    for (std::size_t index; (index = next++) < count;) work(index);
  };
  std::vector<std::future<void>> others;  // each is waited for when it goes
  const unsigned wanted = std::clamp(std::thread::hardware_concurrency(), 1U, kMostThreads) - 1;
  for (unsigned i = 0; i < wanted && i + 1 < count; ++i) {
    try {
      others.push_back(std::async(std::launch::async, run));
    } catch (const std::system_error&) {
      break;  // fewer threads are slower, and no other matter
    }
  }
  run();
  for (std::future<void>& other : others) other.get();
}

}  // namespace vantory
