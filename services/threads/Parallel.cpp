#include "services/threads/Parallel.h"

#include <algorithm>
#include <atomic>
#include <system_error>
#include <thread>
#include <vector>

namespace vantory {

void forEachInParallel(std::size_t count, const std::function<void(std::size_t)>& work) {
  constexpr unsigned kMostThreads = 4;
  std::atomic<std::size_t> next = 0;
  const auto run = [&] {
    for (std::size_t index; (index = next++) < count;) work(index);
  };
  std::vector<std::jthread> others;
  const unsigned wanted = std::clamp(std::thread::hardware_concurrency(), 1U, kMostThreads) - 1;
  for (unsigned i = 0; i < wanted && i + 1 < count; ++i) {
    try {
      others.emplace_back(run);
    } catch (const std::system_error&) {
      break;  // fewer threads are slower, and no other matter
    }
  }
  run();
}

}  // namespace vantory
