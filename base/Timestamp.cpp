// Writes a moment in the local time zone.
#include "base/Timestamp.h"

namespace vantory {

std::optional<std::tm> localParts(Timestamp time) {
  const std::time_t seconds = time.seconds;
  std::tm parts = {};
  if (!localtime_r(&seconds, &parts)) return std::nullopt;
  return parts;
}

std::string localTimeText(Timestamp time, const char* format) {
  const auto parts = localParts(time);
  if (!parts) return "";
  char text[128];
  return std::string(text, std::strftime(text, sizeof text, format, &*parts));
}

}  // namespace vantory
