#include "base/Text.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

#include "base/Format.h"
#include "base/Json.h"
#include "base/LocaleDate.h"
#include "base/Paths.h"

namespace vantory {
namespace {

TEST(Text, TellsUtf8FromOtherBytes) {
  for (const char* text : {"", "plain", "caf\u00e9", "eight bytes and caf\u00e9", "\u20ac", "\U0001f39e", "\U0010ffff"})
    EXPECT_TRUE(isUtf8(text)) << text;
  for (const char* bytes :
       {"caf\xe9", "\xc0\xaf", "\xed\xa0\x80", "\xf4\x90\x80\x80", "\xe2\x82", "eight bytes and \xff"})
    EXPECT_FALSE(isUtf8(bytes)) << printable(bytes);
}

TEST(Text, PrintableIsOneLineOfTextWhateverTheBytes) {
  EXPECT_EQ(printable("caf\u00e9 100% \\ \U0001f39e"), "caf\u00e9 100% \\ \U0001f39e");
  EXPECT_EQ(printable(std::string_view("a\nb\tc\rd\0e\x1b[2J\x7f", 14)), "a\\nb\\tc\\rd\\x00e\\x1b[2J\\x7f");
  EXPECT_EQ(printable("\xff\u00e9\xc3"), "\\xff\u00e9\\xc3");
  EXPECT_EQ(printable("a\u0085b\u2028c\u2029"), "a\\xc2\\x85b\\xe2\\x80\\xa8c\\xe2\\x80\\xa9");
  EXPECT_EQ(printable("\u202egpj.exe\u061c"), "\\xe2\\x80\\xaegpj.exe\\xd8\\x9c");
  EXPECT_EQ(printable("\u00a0\u061b\u200d\u2030\u2070"), "\u00a0\u061b\u200d\u2030\u2070");
  EXPECT_EQ(writeJson(std::string("\u202eg\"\x1b\u009b\u00e9")), "\"\\u202eg\\\"\\u001b\\u009b\u00e9\"");
}

TEST(Text, NamesGoByTheirLettersWhateverTheirCase) {
  std::vector<std::string> names = {"zebra", "\u00dcnder", "\u00e4pfel", "Zebra",   "\u00fcber", "apfel",
                                    "\xff",  "\u00c4pfel", "\u03a3",     "\u03c2a", "\u03c3",    "\U0001f39e"};
  std::ranges::sort(names, [](const auto& left, const auto& right) { return compareNames(left, right) < 0; });
  EXPECT_THAT(names, testing::ElementsAre("apfel", "Zebra", "zebra", "\u00c4pfel", "\u00e4pfel", "\u00fcber",
                                          "\u00dcnder", "\xff", "\u03a3", "\u03c3", "\u03c2a", "\U0001f39e"));
}

TEST(Text, TrimsEveryBlankAtTheEndsOnly) {
  EXPECT_EQ(trimmed(" \u00a0\u3000\ta\u2003b\u2028\n\u0085"), "a\u2003b");
  EXPECT_EQ(trimmed("\u00a0 \u2009"), "");
  EXPECT_EQ(trimmed("\u00e0\xa0"), "\u00e0\xa0");
}

TEST(Format, ArgumentsAndDirectivesNeedNotMatch) {
  EXPECT_EQ(formatted("%@ of %i, %0.2f%%, %@", "one", -2L, 99.996), "one of -2, 100.00%, (null)");
  EXPECT_EQ(formatted("only %@", "one", "surplus", 3), "only one");
  EXPECT_EQ(formatted("%i %@ %@", "text", 7, 0.5), "text 7 0.5");
  EXPECT_EQ(formatted("%x %0.f %0. % %", "unused"), "%x %0.f %0. % %");
}

TEST(Text, AMomentBeyondAllYearsHasNoDate) {
  constexpr Timestamp kBeyond{90'000'000'000'000'000};
  EXPECT_EQ(localTimeText(kBeyond, "%Y"), "");
  EXPECT_EQ(writeJson(kBeyond), "null");
  EXPECT_EQ(writeJson(Timestamp{0}), "\"1970-01-01T00:00:00Z\"");
}

// A locale's forms of dates: its short one and its months.
struct DateForms : std::time_put<char> {
  DateForms(std::string date, std::string month) : date_(std::move(date)), month_(std::move(month)) {}

  iter_type do_put(iter_type out, std::ios_base& base, char fill, const std::tm* time, char format,
                   char modifier) const override {
    if (format == 'b') return std::ranges::copy(month_, out).out;
    if (format == 'x') return put(out, base, fill, time, date_.data(), date_.data() + date_.size());
    return std::time_put<char>::do_put(out, base, fill, time, format, modifier);
  }

  const std::string date_, month_;
};

TEST(Text, TheMediumDateFollowsTheOrderOfTheLocale) {
  const auto date = [](const char* shortForm, const char* month) {
    const std::locale locale(std::locale::classic(), new DateForms(shortForm, month));
    return MediumDateAndTime(locale).text(Timestamp{1795282879});
  };
  setenv("TZ", "UTC", 1);
  tzset();
  EXPECT_EQ(MediumDateAndTime(std::locale::classic()).text(Timestamp{1795282879}), "Nov 21, 2026 17:41:19");
  EXPECT_EQ(date("%d.%m.%Y", "nov."), "21 nov. 2026 17:41:19");
  EXPECT_EQ(date("%Y/%m/%d", "11M"), "2026 11M 21 17:41:19");
  EXPECT_EQ(date("%m/%d/%y", "Nob"), "Nob 21 2026 17:41:19");
}

TEST(Paths, WithinIsTestedOnWholeComponents) {
  EXPECT_TRUE(paths::isWithin("/a/b", "/a"));
  EXPECT_TRUE(paths::isWithin("/a/", "/a"));
  EXPECT_TRUE(paths::isWithin("/a//b", "/a/"));
  EXPECT_FALSE(paths::isWithin("/ab", "/a"));
  EXPECT_FALSE(paths::isWithin("/a", "/a/b"));
  EXPECT_FALSE(paths::isWithin("/a/../b", "/a"));
  EXPECT_FALSE(paths::isWithin("/a", ""));
  EXPECT_EQ(paths::absolute("../b/./c/", "/a"), "/b/c");
  EXPECT_EQ(paths::absolute("/b//c", "/a"), "/b/c");
}

}  // namespace
}  // namespace vantory
