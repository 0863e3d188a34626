// Keeps the newest runtime, and destroys its instances in reverse.
#include "services/Runtime.h"

#include <atomic>

namespace vantory {

namespace {

std::atomic<Runtime*> newest = nullptr;

}  // namespace

Runtime::Runtime(Platform& platform) : platform_(platform), previous_(newest.exchange(this)) {
  if (!previous_) return;
  isHomeNamed = previous_->isHomeNamed;
  leavesOthersAlone = previous_->leavesOthersAlone;
  manyHomesRun = previous_->manyHomesRun;
}

Runtime::~Runtime() {
  while (takeNewestInstance()) continue;
  newest = previous_;
}

Runtime& Runtime::current() {
  return *newest;
}

// Whoever lets go of the instance destroys it, without the lock: threads that its destructor waits for may need it.
std::shared_ptr<void> Runtime::takeNewestInstance() {
  const std::lock_guard lock(mutex_);
  if (instances_.empty()) return nullptr;
  std::shared_ptr<void> instance = std::move(instances_.back().second);
  instances_.pop_back();
  return instance;
}

}  // namespace vantory
