// Moments by the clock of UTC.
#pragma once

#include <cstdint>
#include <string>

namespace vantory {

// Seconds since 1970-01-01 00:00:00 UTC, such as "2026-11-14 21:35:17".
std::string utcText(std::int64_t seconds);

}  // namespace vantory
