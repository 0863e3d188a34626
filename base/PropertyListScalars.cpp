// How property lists write dates, real numbers and data as text.
#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdint>

#include "base/PropertyListFormats.h"
#include "base/UtcText.h"

namespace vantory {

namespace {

using std::chrono::sys_days;
using std::chrono::sys_seconds;
using std::chrono::year;

// Since 1970, in UTC.
constexpr std::int64_t firstSecondOf(int number) {
  return sys_seconds(sys_days(year(number) / 1 / 1)).time_since_epoch().count();
}
constexpr std::int64_t kFirstSecond = firstSecondOf(0);
constexpr std::int64_t kLastSecond = firstSecondOf(10000) - 1;

// A number in a date's fixed place; damage where anything but a digit stands there.
int digitsAt(std::string_view text, std::size_t at, std::size_t count) {
  int number = 0;
  for (const char digit : text.substr(at, count)) {
    if (digit < '0' || digit > '9') throw DamagedPropertyList();
    number = number * 10 + (digit - '0');
  }
  return number;
}

constexpr std::string_view kBase64Digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// For each byte its value as a digit, -1 for one that is none.
constexpr std::array<short, 256> base64Values() {
  std::array<short, 256> values{};
  values.fill(-1);
  for (std::size_t i = 0; i < kBase64Digits.size(); ++i) {
    values[static_cast<unsigned char>(kBase64Digits[i])] = static_cast<short>(i);
  }
  return values;
}
constexpr std::array<short, 256> kBase64Values = base64Values();

bool isSpace(char character) {
  return character == ' ' || character == '\t' || character == '\n' || character == '\r';
}

}  // namespace

std::string propertyListDate(const Timestamp& date) {
  std::string text = utcText(std::clamp(date.seconds, kFirstSecond, kLastSecond)) + "Z";
  std::ranges::replace(text, ' ', 'T');
  return text;
}

Timestamp parsePropertyListDate(std::string_view text) {
  constexpr std::string_view kPattern = "0000-00-00T00:00:00Z";
  if (text.size() != kPattern.size()) throw DamagedPropertyList();
  for (std::size_t i = 0; i < kPattern.size(); ++i) {
    if (kPattern[i] != '0' && text[i] != kPattern[i]) throw DamagedPropertyList();
  }
  const std::chrono::year_month_day day = year(digitsAt(text, 0, 4)) / digitsAt(text, 5, 2) / digitsAt(text, 8, 2);
  const int hour = digitsAt(text, 11, 2);
  const int minute = digitsAt(text, 14, 2);
  const int second = digitsAt(text, 17, 2);
  // 60 is a leap second.
  if (!day.ok() || hour > 23 || minute > 59 || second > 60) throw DamagedPropertyList();
  const std::int64_t midnight = sys_seconds(sys_days(day)).time_since_epoch().count();
  return Timestamp{midnight + hour * 3600 + minute * 60 + second, 0};
}

bool isPropertyListDate(double secondsSince1970) {
  return secondsSince1970 >= static_cast<double>(kFirstSecond) &&
         secondsSince1970 < static_cast<double>(kLastSecond + 1);
}

std::string propertyListReal(double value) {
  if (std::isnan(value)) return "nan";
  if (std::isinf(value)) return value > 0 ? "+infinity" : "-infinity";
  char text[64];
  return std::string(text, std::to_chars(text, text + sizeof text, value).ptr);
}

std::string base64(std::string_view bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (; !bytes.empty(); bytes.remove_prefix(std::min<std::size_t>(3, bytes.size()))) {
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < 3; ++i) {
      bits = bits << 8 | (i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0u);
    }
    for (std::size_t i = 0; i < 4; ++i) {
      text += i <= bytes.size() ? kBase64Digits[bits >> (18 - 6 * i) & 63] : '=';
    }
  }
  return text;
}

std::string parseBase64(std::string_view text) {
  std::string bytes;
  std::uint32_t bits = 0;
  int digits = 0;
  int padding = 0;
  for (const char character : text) {
    if (isSpace(character)) continue;
    if (character == '=') {
      ++padding;
      continue;
    }
    const int value = kBase64Values[static_cast<unsigned char>(character)];
    if (value < 0 || padding > 0) throw DamagedPropertyList();
    bits = bits << 6 | static_cast<std::uint32_t>(value);
    // Every digit but the first of four completes a byte.
    if (digits > 0) bytes += static_cast<char>(bits >> (6 - 2 * digits));
    digits = (digits + 1) % 4;
  }
  // A single digit is less than a byte.
  if (digits == 1 || padding > 2) throw DamagedPropertyList();
  return bytes;
}

}  // namespace vantory
