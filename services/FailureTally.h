// How many files a task could not do its work on.
#pragma once

#include <atomic>
#include <cstddef>

namespace vantory {

// One for the process, so that a task that failed in part can say so when it ends.
class FailureTally {
 public:
  static FailureTally& shared();

  void add(std::size_t count = 1) { count_ += count; }
  std::size_t count() const { return count_; }

 private:
  std::atomic<std::size_t> count_ = 0;
};

}  // namespace vantory
