// Dates as the user's clock shows them.
#pragma once

#include <string>

#include "platform/Clock.h"

namespace vantory {

// The moment in the local time zone, written by a strftime() format; nothing when it lies beyond all years.
std::string localTimeText(Timestamp time, const char* format);

}  // namespace vantory
