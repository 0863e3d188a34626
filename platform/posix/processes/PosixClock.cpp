// Reads the real-time clock, and sleeps.
#include "platform/posix/processes/PosixClock.h"

#include <ctime>

#include "platform/posix/files/Descriptor.h"

namespace vantory {

Timestamp PosixClock::now() const {
  timespec time{};
  clock_gettime(CLOCK_REALTIME, &time);
  return {time.tv_sec, static_cast<std::int32_t>(time.tv_nsec)};
}

// A signal does not shorten it.
void PosixClock::sleep(std::chrono::microseconds duration) {
  if (duration <= duration.zero()) return;
  const auto seconds = std::chrono::floor<std::chrono::seconds>(duration);
  timespec left{};
  left.tv_sec = seconds.count();
  left.tv_nsec = std::chrono::nanoseconds(duration - seconds).count();
  uninterrupted([&] { return nanosleep(&left, &left); });
}

}  // namespace vantory
