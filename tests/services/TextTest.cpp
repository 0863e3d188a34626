#include "services/Text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "services/Format.h"
#include "services/Paths.h"

namespace vantory {
namespace {

using testing::ElementsAre;

TEST(Text, TrimsAndComparesAndSplits) {
  EXPECT_EQ(trimmed(" \t\r\n a b \n"), "a b");
  EXPECT_EQ(trimmed(" \n "), "");
  EXPECT_EQ(lowerCased("FCP Caf\xc3\x89 \xc9"), "fcp caf\xc3\x89 \xc9");
  EXPECT_EQ(compareIgnoringCase("Motion", "mOTION"), 0);
  EXPECT_LT(compareIgnoringCase("motion", "Motion 5"), 0);
  EXPECT_GT(compareIgnoringCase("b", "A"), 0);
  EXPECT_THAT(split(",a,,b", ','), ElementsAre("", "a", "", "b"));
  EXPECT_THAT(split("", ','), ElementsAre(""));
}

TEST(Text, TellsUtf8FromOtherBytes) {
  for (const char* text : {"", "plain", "caf\u00e9", "eight bytes and caf\u00e9", "\u20ac", "\U0001f39e", "\U0010ffff"})
    EXPECT_TRUE(isUtf8(text)) << text;
  const char* const broken[] = {"\xff",
                                "caf\xe9",
                                "\x80",
                                "\xc3",
                                "\xc0\xaf",
                                "\xe0\x80\xaf",
                                "\xed\xa0\x80",
                                "\xf4\x90\x80\x80",
                                "\xe2\x82",
                                "\xf0\x9f\x8e",
                                "eight bytes and \xff"};
  for (const char* bytes : broken) EXPECT_FALSE(isUtf8(bytes)) << printable(bytes);
}

TEST(Text, CountsUtf16Units) {
  EXPECT_EQ(utf16Length("caf\u00e9"), 4u);
  EXPECT_EQ(utf16Length("\U0001f39e!"), 3u);
  EXPECT_EQ(utf16Length("a\xff\xe2\x82"), 4u);
}

TEST(Text, PrintableIsOneLineOfTextWhateverTheBytes) {
  EXPECT_EQ(printable("caf\u00e9 100% \\ \U0001f39e"), "caf\u00e9 100% \\ \U0001f39e");
  EXPECT_EQ(printable(std::string_view("a\nb\tc\rd\0e\x1b[2J\x7f", 14)), "a\\nb\\tc\\rd\\x00e\\x1b[2J\\x7f");
  EXPECT_EQ(printable("\xff\u00e9\xc3"), "\\xff\u00e9\\xc3");
  EXPECT_EQ(printable("a\u0085b\u2028c\u2029"), "a\\xc2\\x85b\\xe2\\x80\\xa8c\\xe2\\x80\\xa9");
}

TEST(Format, FillsPlaceholdersFromLeftToRight) {
  EXPECT_EQ(formatted("Copying %@ to %s: %i of %d, %0.2f%%", "a", std::string("b"), 1, -2L, 99.996),
            "Copying a to b: 1 of -2, 100.00%");
  EXPECT_EQ(formatted("%i %d", std::numeric_limits<std::uint64_t>::max(), std::numeric_limits<std::int64_t>::min()),
            "18446744073709551615 -9223372036854775808");
  EXPECT_EQ(formatted("%0.0f %0.2f", 2.5, 3), "2 3.00");
  EXPECT_EQ(formatted("%0.2f", 1e308).size(), 312u);
}

TEST(Format, ArgumentsAndDirectivesNeedNotMatch) {
  EXPECT_EQ(formatted("%@ and %i", "one"), "one and (null)");
  const std::optional<std::string> none;
  EXPECT_EQ(formatted("%@", none), "(null)");
  EXPECT_EQ(formatted("%@", std::nullopt), "(null)");
  EXPECT_EQ(formatted("only %@", "one", "surplus", 3), "only one");
  EXPECT_EQ(formatted("%i %@ %@", "text", 7, 0.5), "text 7 0.5");
  EXPECT_EQ(formatted("%x %0.f %0. % %", "unused"), "%x %0.f %0. % %");
}

TEST(Format, TextSurvivesASecondFormatting) {
  const std::string once = formatted("Trashing %@", "100% %@ %n %%");
  EXPECT_EQ(once, "Trashing 100% %@ %n %%");
  EXPECT_EQ(formatted(once), "Trashing 100% (null) %n %");
}

TEST(Paths, JoinAndTakeApart) {
  EXPECT_EQ(paths::join("/a", "b"), "/a/b");
  EXPECT_EQ(paths::join("/a/", "/b/"), "/a/b");
  EXPECT_EQ(paths::join("/", "b"), "/b");
  EXPECT_EQ(paths::join("", "b"), "b");
  EXPECT_EQ(paths::join("/a", ""), "/a");
  EXPECT_EQ(paths::lastComponent("/a/b//"), "b");
  EXPECT_EQ(paths::lastComponent("/"), "/");
  EXPECT_EQ(paths::lastComponent("b"), "b");
  EXPECT_EQ(paths::parent("/a//b/"), "/a");
  EXPECT_EQ(paths::parent("/a"), "/");
  EXPECT_EQ(paths::parent("/"), "/");
  EXPECT_EQ(paths::parent("a"), "");
  EXPECT_THAT(paths::components("/a//b"), ElementsAre("/", "a", "b"));
  EXPECT_THAT(paths::components("a/b/"), ElementsAre("a", "b", "/"));
  EXPECT_THAT(paths::components("/"), ElementsAre("/"));
  EXPECT_THAT(paths::components(""), ElementsAre());
}

TEST(Paths, ExtensionIsOfTheLastComponentOnly) {
  EXPECT_EQ(paths::extension("/a.b/c.tar.gz"), "gz");
  EXPECT_EQ(paths::extension("/a.vnt/"), "vnt");
  for (const char* path : {"/a.b/c", ".hidden", "/x/.hidden", "a.", "", "/"})
    EXPECT_EQ(paths::extension(path), "") << path;
  EXPECT_EQ(paths::withoutExtension("/a.b/c.tar.gz"), "/a.b/c.tar");
  EXPECT_EQ(paths::withoutExtension("/a.vnt/"), "/a");
  for (const char* path : {"/a.b/c", "/x/.hidden", "a.", "/"}) EXPECT_EQ(paths::withoutExtension(path), path);
}

TEST(Paths, WithinIsTestedOnWholeComponents) {
  EXPECT_TRUE(paths::isWithin("/a/b", "/a"));
  EXPECT_TRUE(paths::isWithin("/a/", "/a"));
  EXPECT_TRUE(paths::isWithin("/a//b", "/a/"));
  EXPECT_TRUE(paths::isWithin("/a", "/"));
  EXPECT_FALSE(paths::isWithin("/ab", "/a"));
  EXPECT_FALSE(paths::isWithin("/a", "/a/b"));
  EXPECT_FALSE(paths::isWithin("/a/../b", "/a"));
  EXPECT_FALSE(paths::isWithin("a/b", "/a"));
  EXPECT_FALSE(paths::isWithin("/a", ""));
}

}  // namespace
}  // namespace vantory
