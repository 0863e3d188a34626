// Puts texts and moments into the words of a receipt.
#include "services/receipts/ReceiptText.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdio>

#include "base/PropertyListBytes.h"
#include "base/UtcText.h"

namespace vantory::receipt {

// Nearly every text is of plain characters.
void append(std::string& line, std::string_view text) {
  const auto needsEscape = [](char character) {
    return character < 0x20 || character > 0x7e || character == '"' || character == '\\';
  };
  if (text.empty() || std::ranges::any_of(text, needsEscape))
    line += writeTextPropertyList(std::string(text));
  else
    line.append(1, '"').append(text).append(1, '"');
}

void append(std::string& line, std::string_view key, std::string_view value) {
  line.append(key).append(" = ");
  append(line, value);
  line += "; ";
}

std::string momentText(Timestamp moment) {
  std::string text = utcText(moment.seconds);
  std::ranges::replace(text, ' ', 'T');
  char fraction[16];
  std::snprintf(fraction, sizeof fraction, ".%09dZ", moment.nanoseconds);
  return text + fraction;
}

std::optional<Timestamp> momentIn(std::string_view text) {
  using namespace std::chrono;
  constexpr std::size_t kLength = 30;
  if (text.size() != kLength || text.back() != 'Z') return std::nullopt;
  bool isNumber = true;
  const auto number = [&](std::size_t from, std::size_t length) {
    int value = 0;
    const char* const end = text.data() + from + length;
    const auto [stop, failure] = std::from_chars(text.data() + from, end, value);
    isNumber = isNumber && failure == std::errc() && stop == end && value >= 0;
    return value;
  };
  const year_month_day date(year(number(0, 4)), month(static_cast<unsigned>(number(5, 2))),
                            day(static_cast<unsigned>(number(8, 2))));
  const seconds clock = hours(number(11, 2)) + minutes(number(14, 2)) + seconds(number(17, 2));
  const int nanoseconds = number(20, 9);
  if (!isNumber || !date.ok()) return std::nullopt;
  return Timestamp{(sys_days(date) + clock).time_since_epoch().count(), nanoseconds};
}

}  // namespace vantory::receipt
