#include "base/Timestamp.h"

#include <ctime>

namespace vantory {

std::string localTimeText(Timestamp time, const char* format) {
  const std::time_t seconds = time.seconds;
  std::tm parts = {};
  if (!localtime_r(&seconds, &parts)) return "";
  char text[128];
  return std::string(text, std::strftime(text, sizeof text, format, &parts));
}

}  // namespace vantory
