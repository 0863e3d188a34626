// Key paths, and what differs between property lists and between texts.
#include <gmock/gmock.h>

#include "base/LineChanges.h"
#include "base/PropertyListBytes.h"
#include "base/PropertyListChanges.h"

namespace vantory {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

PropertyList list(std::string_view text) {
  return *parsePropertyList(text);
}

std::vector<std::string> changes(const PropertyList& before, const PropertyList& after) {
  std::vector<std::string> lines;
  for (const KeyChange& change : changesBetween(before, after))
    lines.push_back(keyPathText(change.path) + ": " + changeInShort(change));
  return lines;
}

TEST(KeyPathTest, EveryKeyIsReadBackAsItIsWritten) {
  const KeyPath paths[] = {{"a", "b"},
                           {"a.b"},
                           {"a", std::size_t{3}, std::size_t{0}, ""},
                           {std::size_t{7}},
                           {"[0]"},
                           {"\\n"},
                           {"\n\t\x1b\xff"},
                           {""},
                           {"", ""},
                           {"\\x41"},
                           {"Größe → \u2028"}};
  for (const KeyPath& path : paths) EXPECT_EQ(parseKeyPath(keyPathText(path)), path) << keyPathText(path);
  EXPECT_EQ(keyPathText({"a.b", "c[1]", std::size_t{2}}), "a\\.b.c\\[1][2]");
  for (const char* wrong : {"a[", "a[]", "a[-1]", "a[1", "a[1]b", "a\\", "a\\xg0", "a\\x4", "[99999999999999999999]"})
    EXPECT_FALSE(parseKeyPath(wrong)) << wrong;
}

TEST(KeyPathTest, PutsAValueWhereItBelongsAndNowhereElse) {
  const PropertyList whole = list("{ a = { b = 1; }; c = (x, y); }");
  const auto with = [&](const char* path) {
    const auto changed = withValueAt(whole, *parseKeyPath(path), "new");
    return changed ? changes(whole, *changed) : std::vector<std::string>{"nowhere"};
  };
  EXPECT_THAT(with("a.b"), ElementsAre("a.b: \"1\" → \"new\""));
  EXPECT_THAT(with("a.z"), ElementsAre("a.z: + \"new\""));
  EXPECT_THAT(with("c[2]"), ElementsAre("c[2]: + \"new\""));
  for (const char* nowhere : {"c[3]", "z.b", "a.b.c", "a[0]", "c.x"})
    EXPECT_THAT(with(nowhere), ElementsAre("nowhere"));
}

TEST(PropertyListChangesTest, TellsValuesApartThatLookAlike) {
  const auto dictionary = [](PropertyList value) {
    PropertyListDictionary result;
    result.set("k", std::move(value));
    return PropertyList(std::move(result));
  };
  const auto change = [&](PropertyList before, PropertyList after) {
    const auto lines = changes(dictionary(std::move(before)), dictionary(std::move(after)));
    return lines.empty() ? "" : lines.front();
  };
  EXPECT_EQ(change(1, 0), "k: 1 → 0");
  EXPECT_EQ(change(true, false), "k: 1 → 0");
  EXPECT_EQ(change(true, 1), "k: 1 (yes or no) → 1 (whole number)");
  EXPECT_EQ(change(1, "1"), "k: 1 → \"1\"");
  EXPECT_EQ(change(std::string(200, 'x') + "a", std::string(200, 'x') + "b").substr(0, 10), "k: \"xxxxxx");
  EXPECT_EQ(change(PropertyListData{"a"}, PropertyListData{"b"}), "k: 1 byte of data → 1 byte of data, not the same");
  EXPECT_EQ(change(list("{a=1;}"), list("(1)")), "k: 1 key → 1 value");
  EXPECT_THAT(changes(list("{ b = 1; a = 2; }"), list("{ a = 2; b = 1; }")), IsEmpty());
}

TEST(LineChangesTest, FindsTheFewestLines) {
  const auto changes = [](std::string_view before, std::string_view after, std::size_t most = 10) {
    std::string text;
    for (const LineChange& change : lineChanges(before, after, most).value_or(std::vector<LineChange>{{0, true, "?"}}))
      text += std::to_string(change.number) + (change.added ? "+" : "-") + change.line + " ";
    return text;
  };
  EXPECT_EQ(changes("a\nb\nc\nd\n", "a\nc\nx\nd"), "2-b 3+x ");
  EXPECT_EQ(changes("", "a\nb\n"), "1+a 2+b ");
  EXPECT_EQ(changes("a\nb\n", ""), "1-a 2-b ");
  EXPECT_EQ(changes("a\n", "a\n"), "");
  EXPECT_EQ(changes("a\nb\nc\na\nb\nb\na\n", "c\nb\na\nb\na\nc\n"), "1-a 2-b 2+b 6-b 6+c ");
  EXPECT_EQ(changes("1\n2\n3\n", "4\n5\n6\n", 5), "0+? ");
}

}  // namespace

}  // namespace vantory
