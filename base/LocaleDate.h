// A moment as the user's language writes it.
#pragma once

#include <array>
#include <locale>
#include <string>

#include "base/Timestamp.h"

namespace vantory {

// Day, abbreviated month and year in the locale's order, then its time of day; in English, and where a locale has no
// months of its own, "Nov 21, 2026 21:21:19".
class MediumDateAndTime {
 public:
  explicit MediumDateAndTime(const std::locale& locale);

  // The moment in the local time zone; nothing when it lies beyond all years.
  std::string text(Timestamp time) const;

 private:
  std::locale locale_;
  // Of day, month and year in the locale's short date; all 0 in English.
  std::array<std::size_t, 3> places_ = {};
};

}  // namespace vantory
