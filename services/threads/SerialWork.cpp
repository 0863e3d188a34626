#include "services/threads/SerialWork.h"

#include <exception>
#include <utility>

#include "services/Runtime.h"
#include "services/log/QWException.h"
#include "services/threads/BackgroundThreads.h"

namespace vantory {

SerialWork& SerialWork::tasks() {
  return Runtime::current().shared<SerialWork>();
}

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

std::function<void()> SerialWork::takeNext() {
  const std::lock_guard lock(mutex_);
  working_ = !waiting_.empty();
  if (!working_) return nullptr;
  std::function<void()> work = std::move(waiting_.front());
  waiting_.pop_front();
  return work;
}

}  // namespace vantory
