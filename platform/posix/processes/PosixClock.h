// The machine's own clock.
#pragma once

#include "platform/Clock.h"

namespace vantory {

class PosixClock : public Clock {
 public:
  Timestamp now() const override;
  void sleep(std::chrono::microseconds duration) override;
};

}  // namespace vantory
