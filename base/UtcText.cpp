// Writes the calendar's date and the time of day.
#include "base/UtcText.h"

#include <chrono>
#include <cstdio>

namespace vantory {

std::string utcText(std::int64_t seconds) {
  const std::chrono::sys_seconds moment{std::chrono::seconds(seconds)};
  const auto midnight = std::chrono::floor<std::chrono::days>(moment);
  const std::chrono::year_month_day date(midnight);
  const std::chrono::hh_mm_ss clock(moment - midnight);
  char text[64];
  std::snprintf(text, sizeof text, "%04d-%02u-%02u %02d:%02d:%02d", static_cast<int>(date.year()),
                static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                static_cast<int>(clock.seconds().count()));
  return text;
}

}  // namespace vantory
