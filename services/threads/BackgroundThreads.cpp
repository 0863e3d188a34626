#include "services/threads/BackgroundThreads.h"

#include <exception>
#include <system_error>
#include <thread>
#include <utility>

#include "services/Runtime.h"
#include "services/log/QWException.h"
#include "services/log/QWLog.h"
#include "services/threads/MainThread.h"

namespace vantory {

BackgroundThreads& BackgroundThreads::shared() {
  return Runtime::current().shared<BackgroundThreads>();
}

bool BackgroundThreads::start(std::function<void()> work) {
  {
    const std::lock_guard lock(mutex_);
    ++running_;
  }
  try {
    std::thread([this, work = std::move(work)] { run(work); }).detach();
    return true;
  } catch (const std::system_error& error) {
    QWLog::appendLog("Unable to start a task: %@", error.what());
  }
  workEnded();
  return false;
}

void BackgroundThreads::run(const std::function<void()>& work) {
  try {
    work();
  } catch (const std::exception& exception) {
    QWException::logException(exception, "BackgroundThreads");
  }
  workEnded();
}

// Whoever waits may destroy this object as soon as the lock is given up.
void BackgroundThreads::workEnded() {
  const std::lock_guard lock(mutex_);
  --running_;
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
  if (running_ == 0 && !waiting_.empty()) MainThread::shared().post([this] { runWaiting(); });
}

// What is run may serve events of its own, such as a question's, and so come here again.
void BackgroundThreads::runWaiting() {
  if (servingWaiting_) return;
  servingWaiting_ = true;
  while (const auto work = takeWaiting()) work();
  servingWaiting_ = false;
}

std::function<void()> BackgroundThreads::takeWaiting() {
  const std::lock_guard lock(mutex_);
  if (running_ > 0 || waiting_.empty()) return nullptr;
  auto work = std::move(waiting_.front());
  waiting_.pop_front();
  return work;
}

bool BackgroundThreads::isWorking() const {
  const std::lock_guard lock(mutex_);
  return running_ > 0;
}

void BackgroundThreads::waitForAll() {
  MainThread::shared().runUntil([this] {
    const std::lock_guard lock(mutex_);
    return running_ == 0 && waiting_.empty();
  });
}

}  // namespace vantory
