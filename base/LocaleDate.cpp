// Puts a date together in the order of the locale.
#include "base/LocaleDate.h"

#include <algorithm>
#include <iomanip>
#include <sstream>
#include <utility>

namespace vantory {

namespace {

std::string formattedTime(const std::tm& time, const char* format, const std::locale& locale) {
  std::ostringstream text;
  text.imbue(locale);
  text << std::put_time(&time, format);
  return text.str();
}

// English gets one order everywhere, and so do locales that are not there or have no language, such as "C.UTF-8".
bool hasEnglishMonths(const std::locale& locale) {
  std::tm time = {};
  for (; time.tm_mon < 12; ++time.tm_mon)
    if (formattedTime(time, "%b", locale) != formattedTime(time, "%b", std::locale::classic())) return false;
  return true;
}

// Where the short date changes with the field.
std::size_t placeInDate(int std::tm::*field, const std::locale& locale) {
  std::tm time = {};
  // Each field keeps its two digits when it is one more: the date changes where the field stands, and nowhere before.
  time.tm_mday = 11;
  time.tm_mon = 10;
  time.tm_year = 122;
  const std::string date = formattedTime(time, "%x", locale);
  ++(time.*field);
  const std::string other = formattedTime(time, "%x", locale);
  return static_cast<std::size_t>(std::ranges::mismatch(date, other).in1 - date.begin());
}

}  // namespace

MediumDateAndTime::MediumDateAndTime(const std::locale& locale) : locale_(locale) {
  if (locale_ == std::locale::classic() || hasEnglishMonths(locale_)) return;
  places_ = {placeInDate(&std::tm::tm_mday, locale_), placeInDate(&std::tm::tm_mon, locale_),
             placeInDate(&std::tm::tm_year, locale_)};
}

std::string MediumDateAndTime::text(Timestamp time) const {
  const auto parts = localParts(time);
  if (!parts) return "";
  const std::string day = std::to_string(parts->tm_mday);
  const std::string month = formattedTime(*parts, "%b ", locale_);
  if (places_ == decltype(places_){}) return month + day + formattedTime(*parts, ", %Y %T", std::locale::classic());
  using Part = std::pair<std::size_t, std::string>;
  // A locale whose date leaves a field out has it in this order.
  std::array<Part, 3> date = {
      Part{places_[0], day + " "}, {places_[1], month}, {places_[2], formattedTime(*parts, "%Y ", locale_)}};
  std::ranges::stable_sort(date, {}, &Part::first);
  return date[0].second + date[1].second + date[2].second + formattedTime(*parts, "%X", locale_);
}

}  // namespace vantory
