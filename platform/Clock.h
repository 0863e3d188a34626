// Time, as the program asks for it, so that tests can hold it still.
#pragma once

#include <chrono>

#include "base/Timestamp.h"

namespace vantory {

class Clock {
 public:
  virtual ~Clock() = default;
  virtual Timestamp now() const = 0;
  // Blocks the calling thread.
  virtual void sleep(std::chrono::microseconds duration) = 0;
};

}  // namespace vantory
