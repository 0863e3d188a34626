// Time, as the program asks for it, so that tests can hold it still.
#pragma once

#include <chrono>
#include <compare>
#include <cstdint>

namespace vantory {

// A moment: seconds since 1970-01-01 00:00:00 UTC (negative before it) and nanoseconds (0 to 999999999).
struct Timestamp {
  std::int64_t seconds = 0;
  std::int32_t nanoseconds = 0;

  auto operator<=>(const Timestamp&) const = default;  // NOLINT(modernize-use-nullptr): a false finding
};

class Clock {
 public:
  virtual ~Clock() = default;
  virtual Timestamp now() const = 0;
  // Blocks the calling thread.
  virtual void sleep(std::chrono::microseconds duration) = 0;
};

}  // namespace vantory
