// The process-wide context: the platform, and the single instances that stand on it.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <typeindex>
#include <utility>
#include <vector>

#include "platform/Platform.h"

namespace vantory {

class RunningApplicationGuard;

// Owned by main, or by a test's fixture; the newest one alive is current(). Shared instances are made on first use and
// destroyed with it, the newest first.
class Runtime {
 public:
  explicit Runtime(Platform& platform);
  ~Runtime();
  Runtime(const Runtime&) = delete;
  Runtime& operator=(const Runtime&) = delete;

  // One must exist.
  static Runtime& current();

  Platform& platform() const { return platform_; }

  // The single instance of T. Safe from any thread.
  template <class T>
  T& shared() {
    const std::lock_guard lock(mutex_);
    for (const auto& [type, instance] : instances_)
      if (type == std::type_index(typeid(T))) return *static_cast<T*>(instance.get());
    auto instance = std::make_shared<T>();
    T& reference = *instance;
    instances_.emplace_back(std::type_index(typeid(T)), std::move(instance));
    return reference;
  }

  // Who is asked before files of a running application are touched. Not owned; null until set.
  RunningApplicationGuard* guard = nullptr;
  // Whether whoever started the program named the home: then backups have no part of its path, whatever its depth.
  // A runtime made within another has its answer.
  bool isHomeNamed = false;
  // Whether the superuser named it, and so what others have in the folders that all users share is left alone.
  // Likewise.
  bool leavesOthersAlone = false;
  // The name of the run over many homes that this is part of; empty for none. Likewise.
  std::string manyHomesRun;

 private:
  std::shared_ptr<void> takeNewestInstance();

  Platform& platform_;
  Runtime* previous_;
  std::recursive_mutex mutex_;  // an instance may ask for another while it is made
  std::vector<std::pair<std::type_index, std::shared_ptr<void>>> instances_;
};

}  // namespace vantory
