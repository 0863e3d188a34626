// Names that are called out in the program, for whoever wants to hear them.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "base/PropertyList.h"

namespace vantory {

// What is told along with a name.
using UserInfo = PropertyListDictionary;

// Any thread may post and observe.
class NotificationCenter {
  struct Entry;

 public:
  // Observes until it is destroyed or reset. When that returns the observer is not running and never will again, unless
  // the observer itself ended it. So an observer must not wait for the thread that may end its observation.
  class [[nodiscard]] Observation {
   public:
    Observation() = default;
    ~Observation() { reset(); }
    Observation(Observation&&) = default;
    Observation& operator=(Observation&& other) noexcept;
    void reset();

   private:
    friend class NotificationCenter;
    explicit Observation(std::shared_ptr<Entry> entry) : entry_(std::move(entry)) {}

    std::shared_ptr<Entry> entry_;
  };

  static NotificationCenter& shared();

  // `observer` is called at each later post of that name, on the posting thread.
  Observation observe(std::string name, std::function<void(const UserInfo&)> observer);
  // For observers that the name says enough.
  Observation observe(std::string name, std::function<void()> observer);
  // Calls the observers of that name, in the order they came, and returns when the last has run.
  void post(std::string_view name, const UserInfo& info = {});
  // The same on the main thread, waiting for it. False when the program is ending and nobody was called.
  bool postOnMainThread(std::string_view name);
  // The same on the main thread without waiting for it.
  void postOnMainThreadLater(std::string name, UserInfo info);

 private:
  std::mutex mutex_;
  std::vector<std::weak_ptr<Entry>> entries_;
};

}  // namespace vantory
