// Keeps observers, and calls them on the right thread.
#include "services/messages/NotificationCenter.h"

#include <utility>

#include "services/Runtime.h"
#include "services/threads/MainThread.h"

namespace vantory {

struct NotificationCenter::Entry {
  Entry(std::string name, std::function<void(const UserInfo&)> observer)
      : name(std::move(name)), observer(std::move(observer)) {}

  const std::string name;
  const std::function<void(const UserInfo&)> observer;
  std::recursive_mutex mutex;  // held while the observer runs, which may end its own observation
  bool ended = false;
};

NotificationCenter::Observation& NotificationCenter::Observation::operator=(Observation&& other) noexcept {
  if (this == &other) return *this;
  reset();
  entry_ = std::move(other.entry_);
  return *this;
}

// Waits for an observer that runs on another thread.
void NotificationCenter::Observation::reset() {
  const std::shared_ptr<Entry> entry = std::exchange(entry_, nullptr);
  if (!entry) return;
  const std::lock_guard lock(entry->mutex);
  entry->ended = true;
}

NotificationCenter& NotificationCenter::shared() {
  return Runtime::current().shared<NotificationCenter>();
}

// Observers that have gone are forgotten on the way.
NotificationCenter::Observation NotificationCenter::observe(std::string name,
                                                            std::function<void(const UserInfo&)> observer) {
  const auto entry = std::make_shared<Entry>(std::move(name), std::move(observer));
  const std::lock_guard lock(mutex_);
  std::erase_if(entries_, [](const std::weak_ptr<Entry>& known) { return known.expired(); });
  entries_.push_back(entry);
  return Observation(entry);
}

NotificationCenter::Observation NotificationCenter::observe(std::string name, std::function<void()> observer) {
  return observe(std::move(name), [observer = std::move(observer)](const UserInfo&) { observer(); });
}

// Observers are called without the lock: they may post and observe themselves.
void NotificationCenter::post(std::string_view name, const UserInfo& info) {
  std::vector<std::shared_ptr<Entry>> called;
  {
    const std::lock_guard lock(mutex_);
    for (const std::weak_ptr<Entry>& known : entries_)
      if (auto entry = known.lock(); entry && entry->name == name) called.push_back(std::move(entry));
  }
  for (const std::shared_ptr<Entry>& entry : called) {
    const std::lock_guard lock(entry->mutex);
    if (!entry->ended) entry->observer(info);
  }
}

bool NotificationCenter::postOnMainThread(std::string_view name) {
  return MainThread::shared().runAndWait([this, name] { post(name); });
}

// The main thread may be waiting for the very thread that posts.
void NotificationCenter::postOnMainThreadLater(std::string name, UserInfo info) {
  MainThread::shared().post([this, name = std::move(name), info = std::move(info)] { post(name, info); });
}

}  // namespace vantory
