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
  EXPECT_EQ(lowerCased("FCP Caf\xc3\x89 \xc9"), "fcp caf\xc3\x89 \xc9");
  EXPECT_EQ(compareIgnoringCase("Motion", "mOTION"), 0);
  EXPECT_LT(compareIgnoringCase("motion", "Motion 5"), 0);
  EXPECT_THAT(split(",a,,b", ','), ElementsAre("", "a", "", "b"));
}

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
}

TEST(Format, FillsPlaceholdersFromLeftToRight) {
  EXPECT_EQ(formatted("Copying %@ to %s: %i of %d, %0.2f%%", "a", std::string("b"), 1, -2L, 99.996),
            "Copying a to b: 1 of -2, 100.00%");
  EXPECT_EQ(formatted("%i %d", std::numeric_limits<std::uint64_t>::max(), std::numeric_limits<std::int64_t>::min()),
            "18446744073709551615 -9223372036854775808");
}

TEST(Format, ArgumentsAndDirectivesNeedNotMatch) {
  EXPECT_EQ(formatted("%@ and %i", "one"), "one and (null)");
  const std::optional<std::string> none;
  EXPECT_EQ(formatted("%@", none), "(null)");
  EXPECT_EQ(formatted("only %@", "one", "surplus", 3), "only one");
  EXPECT_EQ(formatted("%i %@ %@", "text", 7, 0.5), "text 7 0.5");
  EXPECT_EQ(formatted("%x %0.f %0. % %", "unused"), "%x %0.f %0. % %");
}

TEST(Paths, JoinAndTakeApart) {
  EXPECT_EQ(paths::join("/a/", "/b/"), "/a/b");
  EXPECT_EQ(paths::join("/", "b"), "/b");
  EXPECT_EQ(paths::lastComponent("/a/b//"), "b");
  EXPECT_EQ(paths::parent("/a//b/"), "/a");
  EXPECT_EQ(paths::parent("/a"), "/");
  EXPECT_EQ(paths::extension("/a.b/c.tar.gz"), "gz");
  for (const char* path : {"/a.b/c", "/x/.hidden", "a.", "", "/"}) EXPECT_EQ(paths::extension(path), "") << path;
  EXPECT_EQ(paths::withoutExtension("/a.vnt/"), "/a");
}

TEST(Paths, WithinIsTestedOnWholeComponents) {
  EXPECT_TRUE(paths::isWithin("/a/b", "/a"));
  EXPECT_TRUE(paths::isWithin("/a/", "/a"));
  EXPECT_TRUE(paths::isWithin("/a//b", "/a/"));
  EXPECT_FALSE(paths::isWithin("/ab", "/a"));
  EXPECT_FALSE(paths::isWithin("/a", "/a/b"));
  EXPECT_FALSE(paths::isWithin("/a/../b", "/a"));
  EXPECT_FALSE(paths::isWithin("/a", ""));
}

}  // namespace
}  // namespace vantory
