// Moments, and how the user's clock shows them.
#pragma once

#include <compare>
#include <cstdint>
#include <ctime>
#include <optional>
#include <string>

namespace vantory {

// Seconds since 1970-01-01 00:00:00 UTC (negative before it) and nanoseconds (0 to 999999999).
struct Timestamp {
  std::int64_t seconds = 0;
  std::int32_t nanoseconds = 0;

  auto operator<=>(const Timestamp&) const = default;  // NOLINT(modernize-use-nullptr): a false finding
};

// The moment in the local time zone; none when it lies beyond all years.
std::optional<std::tm> localParts(Timestamp time);
// The moment in the local time zone, written by a strftime() format; nothing when it lies beyond all years.
std::string localTimeText(Timestamp time, const char* format);

}  // namespace vantory
