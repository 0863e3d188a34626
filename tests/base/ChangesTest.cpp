// Key paths, and what differs between property lists and between texts.
#include <gmock/gmock.h>

#include "base/LineChanges.h"
#include "base/PropertyListBytes.h"
#include "base/PropertyListChanges.h"
#include "base/PropertyListEditing.h"
#include "base/PropertyListFormats.h"

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
  EXPECT_EQ(keyPathInWords({""}), "\"\"");
  EXPECT_EQ(keyPathInWords({"a ", " b "}), "\"a . b \"");
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

// Each edit alone, in each form; what else is there stays.
TEST(PropertyListEditingTest, ChangesOnlyWhatItIsToldTo) {
  const std::string xml =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!-- mine <dict> -->\n<plist version='1.0'><dict>\n"
      "\t<key>a&amp;b</key>\n\t<array>\n\t\t<true/>\n\t\t<real>1.50</real>\n\t</array>\n"
      "\t<key>d</key> <dict>\n\t\t<key>x</key><string><![CDATA[<y>]]></string>\n\t</dict>\n\t<key>e</key><dict/>\n"
      "\t<key>t</key><date>2026-01-02T03:04:05Z</date>\n</dict></plist>\n";
  const PropertyList whole = *parsePropertyList(xml);
  const std::string text = writeTextPropertyList(whole);
  PropertyListDictionary value;
  value.set("k\né\U0001F600", PropertyListArray{1, -1, 300, 1LL << 40, ~0ULL, 0.1, "", PropertyListData{"\x00\xff"}});
  for (const std::string& before : {xml, writeBinaryPropertyList(whole), text})
    for (const char* path : {"a&b[0]", "a&b[2]", "d.x", "d.new", "e.new", "new", "t"}) {
      const auto after = editedPropertyList(before, {{*parseKeyPath(path), value}});
      ASSERT_TRUE(after) << path;
      EXPECT_EQ(formOfPropertyList(*after), formOfPropertyList(before));
      const auto found = changesBetween(*parsePropertyList(before), *parsePropertyList(*after));
      ASSERT_EQ(found.size(), 1U) << path;
      EXPECT_EQ(keyPathText(found[0].path), path);
      EXPECT_TRUE(before == text || found[0].after == PropertyList(value)) << path;
    }
  EXPECT_EQ(*editedPropertyList(xml, {{{"d", "x"}, "<z>"}}),
            std::string(xml).replace(xml.find("<string>"), 32, "<string>&lt;z&gt;</string>"));
  EXPECT_THAT(*editedPropertyList(xml, {{{"d", "y"}, true}}),
              testing::HasSubstr("</string>\n\t\t<key>y</key>\n\t\t<true/>\n\t</dict>"));
  // In text form, data stays data, and what might be something else stays alone.
  EXPECT_EQ(*editedPropertyList("{a = 1; b = <ff>; c = \"\\\\2\";}", {{{"a"}, "2"}}),
            "{\n    a = 2;\n    b = <ff>;\n    c = \"\\\\2\";\n}\n");
  for (const char* quoted : {"{a = 1; b = \"\\377\";}", "{a = 1; b = \"\xff\";}"})
    EXPECT_FALSE(editedPropertyList(quoted, {{{"a"}, "2"}})) << quoted;
  for (const char* nowhere : {"a&b[3]", "d.x.y", "nothing.new"})
    EXPECT_FALSE(editedPropertyList(xml, {{*parseKeyPath(nowhere), true}})) << nowhere;
}

}  // namespace

}  // namespace vantory
