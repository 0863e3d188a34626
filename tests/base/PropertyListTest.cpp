#include "base/PropertyListBytes.h"

#include <gmock/gmock.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace vantory {

namespace {

using namespace std::string_literals;

std::string xml(const std::string& body) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
         "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n<plist version=\"1.0\">" +
         body + "</plist>\n";
}

std::string wide(const std::string& ascii, std::size_t unitSize, bool bigEndian) {
  std::string bytes;
  for (const char character : ascii) {
    std::string unit(unitSize, '\0');
    unit[bigEndian ? unitSize - 1 : 0] = character;
    bytes += unit;
  }
  return bytes;
}

std::string bigEndian(std::uint64_t number, int size) {
  std::string bytes;
  for (int i = size - 1; i >= 0; --i) bytes += static_cast<char>(number >> (8 * i));
  return bytes;
}

std::string trailer(std::uint64_t offsetSize, std::uint64_t referenceSize, std::uint64_t count, std::uint64_t top,
                    std::uint64_t table) {
  return std::string(6, '\0') + bigEndian(offsetSize, 1) + bigEndian(referenceSize, 1) + bigEndian(count, 8) +
         bigEndian(top, 8) + bigEndian(table, 8);
}

// The first object is the top one; references are of `referenceSize` bytes.
std::string binary(const std::vector<std::string>& objects, int referenceSize = 1) {
  std::string bytes = "bplist00";
  std::string table;
  for (const std::string& object : objects) {
    table += bigEndian(bytes.size(), 4);
    bytes += object;
  }
  const std::size_t tableAt = bytes.size();
  return bytes + table + trailer(4, referenceSize, objects.size(), 0, tableAt);
}

std::string repeated(const std::string& text, int count) {
  std::string result;
  for (int i = 0; i < count; ++i) result += text;
  return result;
}

PropertyListDictionary everyType() {
  PropertyListDictionary all;
  all.append("yes", true);
  all.append("lowest", std::numeric_limits<std::int64_t>::min());
  all.append("highest", std::numeric_limits<std::uint64_t>::max());
  all.append("tenth", 0.1);
  all.append("tiny", std::numeric_limits<double>::denorm_min());
  all.append("huge", -std::numeric_limits<double>::infinity());
  all.append("text <&> \"'\\ ]]>", " a\tb\nc\r\nd \xc3\xa9 \xf0\x9f\x8e\xac ");
  all.append("", "");
  all.append("data", PropertyListData{repeated("vantory\0"s, 20)});
  all.append("nothing", PropertyListData{});
  all.append("date", Timestamp{1794692117, 0});
  all.append("list", PropertyListArray{"x", PropertyListArray{}, PropertyListDictionary{}});
  return all;
}

PropertyList valueOf(const std::string& bytes) {
  const auto value = parsePropertyList(bytes);
  EXPECT_TRUE(value.has_value()) << bytes.substr(0, 400);
  return value.value_or("damaged");
}

// A dictionary with the one key "a".
PropertyList dictionaryWith(PropertyList value) {
  PropertyListDictionary dictionary;
  dictionary.append("a", std::move(value));
  return dictionary;
}

}  // namespace

TEST(PropertyListText, GoesThroughXmlWhateverTheBytes) {
  for (const std::string& text : {"plain"s, "\xff/caf\xc3\xa9"s, "bell\x01"s, "nul\0"s, "\xef\xbf\xbf"s, ""s}) {
    EXPECT_EQ(textOf(valueOf(writeXmlPropertyList(textValue(text)))), text);
    EXPECT_EQ(textOf(valueOf(writeXmlPropertyList(PropertyList(text)))), text);
  }
  EXPECT_EQ(textOf(PropertyListData{"abc"}), std::nullopt);
  EXPECT_EQ(textOf(PropertyList(1)), std::nullopt);
}

TEST(XmlPropertyList, GivesBackWhatWasWritten) {
  EXPECT_EQ(valueOf(writeXmlPropertyList(everyType())), PropertyList(everyType()));
  const PropertyList nan = valueOf(writeXmlPropertyList(PropertyList(std::nan(""))));
  EXPECT_TRUE(std::isnan(std::get<double>(nan.content())));
  using Limits = std::numeric_limits<std::int64_t>;
  for (const std::int64_t seconds : {Limits::min(), Limits::max(), std::int64_t{-1}, std::int64_t{-62135596801}}) {
    const std::string once = writeXmlPropertyList(PropertyList(Timestamp{seconds, 5}));
    EXPECT_EQ(writeXmlPropertyList(valueOf(once)), once);
  }
}

TEST(XmlPropertyList, ReadsWhatOthersWrite) {
  EXPECT_EQ(valueOf(xml("<!-- it's --><string>a&#x41;&amp;<!-- - --><![CDATA[<b>]]>\r\nc\rd</string >")),
            PropertyList("aA&<b>\nc\nd"));
  EXPECT_EQ(valueOf(xml("<dict><key>a</key><integer>1</integer><key>a</key><integer> 0x1F </integer></dict>")),
            dictionaryWith(31));
  EXPECT_EQ(valueOf(xml("<array><real>+1e3</real><integer>-9223372036854775808</integer><true></true></array>")),
            PropertyList(PropertyListArray{1000.0, std::numeric_limits<std::int64_t>::min(), true}));
  EXPECT_EQ(valueOf(xml("<array>\n <string> \n</string><!-- -->\n <string></string>\n</array>")),
            PropertyList(PropertyListArray{" \n", ""}));
  EXPECT_EQ(valueOf(xml("<data> aGVs\n\tbG8 </data>")), PropertyList(PropertyListData{"hello"}));
  EXPECT_EQ(valueOf("<!DOCTYPE plist [<!ENTITY x SYSTEM \"file:///etc/passwd\"><!ENTITY y \"a\">]>"
                    "<plist><string>&x;&y;</string></plist>"),
            PropertyList("&x;&y;"))
      << "fetches and expands nothing";
  EXPECT_EQ(valueOf("<!DOCTYPE plist [<!-- it's > ]> --><!ENTITY e \"]>\">]>\n<plist a='>'><true/></plist><!-- -->"),
            PropertyList(true));
}

TEST(XmlPropertyList, ReadsEveryEncoding) {
  const std::string text = "<plist><string>a</string></plist>";
  EXPECT_EQ(valueOf("\xef\xbb\xbf" + text), PropertyList("a"));
  for (const std::size_t size : {2, 4}) {
    EXPECT_EQ(valueOf(wide(text, size, true)), PropertyList("a"));
    EXPECT_EQ(valueOf(wide(text, size, false)), PropertyList("a"));
  }
  EXPECT_EQ(valueOf("\xff\xfe" + wide("<plist><string>", 2, false) + "\x3c\xd8\xac\xdf" +
                    wide("</string></plist>", 2, false)),
            PropertyList("\xf0\x9f\x8e\xac"));
  EXPECT_EQ(valueOf("<?xml version='1.0' encoding='ISO-8859-1'?><plist><string>\xe9</string></plist>"),
            PropertyList("\xc3\xa9"));
}

TEST(XmlPropertyList, RefusesDamage) {
  for (const char* body :
       {"", "<dict><key>a</key></dict>", "<dict><key>a</dict></key>", "<string>&#xD800;</string>",
        "<string>\xff</string>", "<integer>99999999999999999999</integer>", "<real>1e999</real>",
        "<date>2026-02-30T00:00:00Z</date>", "<date>10000-01-01T00:00:00Z</date>", "<data>!</data>", "<true>x</true>"})
    EXPECT_EQ(parsePropertyList(xml(body)), std::nullopt) << body;
  const std::string whole = xml("<dict><key>a</key><string>b</string></dict>");
  for (std::size_t length = 0; length < whole.size() - 1; ++length)
    EXPECT_EQ(parsePropertyList(whole.substr(0, length)), std::nullopt) << length;
}

TEST(PropertyListDepth, EndsAt512LevelsInEveryForm) {
  const auto nested = [](int depth) {
    std::vector<std::string> objects;
    for (int i = 1; i < depth; ++i) objects.push_back("\xa1"s + bigEndian(i, 2));
    objects.push_back("\xa0");
    return std::vector<std::string>{xml(repeated("<array>", depth) + repeated("</array>", depth)),
                                    repeated("(", depth) + repeated(")", depth), binary(objects, 2)};
  };
  for (const std::string& bytes : nested(512)) {
    const PropertyList value = valueOf(bytes);
    EXPECT_EQ(valueOf(writeXmlPropertyList(value)), value);
    EXPECT_EQ(valueOf(writeTextPropertyList(value)), value);
  }
  for (const std::string& bytes : nested(513)) EXPECT_EQ(parsePropertyList(bytes), std::nullopt);
  EXPECT_EQ(parsePropertyList(xml(repeated("<dict><key>k</key>", 100000))), std::nullopt);
  EXPECT_EQ(parsePropertyList(xml(repeated("<array>", 250000) + repeated("</array>", 250000))), std::nullopt);
  EXPECT_EQ(parsePropertyList(repeated("{a=", 100000)), std::nullopt);
}

TEST(BinaryPropertyList, ReadsEveryType) {
  const std::string bytes =
      binary({"\xa9\x01\x02\x03\x04\x05\x06\x07\x08\x0d"s, "\x09", "\x10\xff", "\x13" + bigEndian(-5, 8),
              "\x14" + bigEndian(0, 8) + bigEndian(-1, 8), "\x23" + bigEndian(0x3ff8000000000000, 8),
              "\x33" + bigEndian(0xbff8000000000000, 8), "\x42\x00\xff"s, "\xd1\x09\x0a",
              "\x51"
              "a",
              "\x6f\x10\x02\xd8\x3c\xdf\xac"s, "\x22" + bigEndian(0x3f000000, 4), "\x08", "\xa2\x0b\x0c"});
  EXPECT_EQ(valueOf(bytes),
            PropertyList(PropertyListArray{true, 255, -5, std::numeric_limits<std::uint64_t>::max(), 1.5,
                                           Timestamp{978307198, 500000000}, PropertyListData{"\0\xff"s},
                                           dictionaryWith("\xf0\x9f\x8e\xac"), PropertyListArray{0.5, false}}));
  for (std::size_t length = 0; length < bytes.size(); ++length)
    EXPECT_EQ(parsePropertyList(bytes.substr(0, length)), std::nullopt) << length;
}

TEST(BinaryPropertyList, RefusesWhatItCannotHold) {
  const std::vector<std::string> objects[] = {
      {"\xa1\x01"s},                    // no such object
      {"\xaf\x13" + bigEndian(-1, 8)},  // counts beyond the file
      {"\x4f\x12" + bigEndian(0xffffffff, 4)},
      {"\x6f\x13" + bigEndian(1ull << 63, 8)},
      {"\x5f\x14"},  // sizes and types that do not exist
      {"\x14" + bigEndian(1, 8) + bigEndian(0, 8)},
      {"\x00"s},
      {"\x80\x01"},
      {"\x33" + bigEndian(0x7ff8000000000000, 8)},  // dates: not a number, huge
      {"\x33" + bigEndian(0x7fe0000000000000, 8)},
      {"\x51\xff"},  // text that is none
      {"\x61\xd8\x3c"},
      {"\xd1\x01\x01", "\x09"},  // a key that is no text
  };
  for (const auto& list : objects) EXPECT_EQ(parsePropertyList(binary(list)), std::nullopt) << list[0][0];

  const std::string one = "bplist00\x09\x08";
  EXPECT_EQ(valueOf(one + trailer(1, 1, 1, 0, 9)), PropertyList(true));
  for (const std::string& bad :
       {trailer(0, 1, 1, 0, 9), trailer(9, 1, 1, 0, 9), trailer(1, 0, 1, 0, 9), trailer(1, 9, 1, 0, 9),
        trailer(1, 1, 0, 0, 9), trailer(1, 1, 2, 0, 9), trailer(8, 1, (1ull << 61) + 1, 0, 9), trailer(1, 1, 1, 1, 9),
        trailer(1, 1, 1, 0, 7), trailer(1, 1, 1, 0, 8), trailer(1, 1, 1, 0, 11), trailer(1, 1, 1, 0, 1ull << 63)})
    EXPECT_EQ(parsePropertyList(one + bad), std::nullopt);
}

TEST(BinaryPropertyList, CopiesSharedObjectsWithinBounds) {
  EXPECT_EQ(valueOf(binary({"\xa2\x01\x01", "\xa1\x02",
                            "\x51"
                            "a"})),
            PropertyList(PropertyListArray{PropertyListArray{"a"}, PropertyListArray{"a"}}));
  EXPECT_EQ(parsePropertyList(binary({"\xa1\x00"s})), std::nullopt);
  EXPECT_EQ(parsePropertyList(binary({"\xa2\x01\x01", "\xa2\x00\x00"s})), std::nullopt);

  std::vector<std::string> bomb;  // 200 to the power of 12 values
  for (char next = 1; next <= 12; ++next) bomb.push_back("\xaf\x10\xc8" + std::string(200, next));
  bomb.push_back("\x09");
  EXPECT_EQ(parsePropertyList(binary(bomb)), std::nullopt);

  const std::string longText = "\x5f\x12" + bigEndian(1 << 20, 4) + std::string(1 << 20, 'x');
  EXPECT_EQ(parsePropertyList(binary({"\xaf\x11" + bigEndian(10000, 2) + std::string(10000, '\x01'), longText})),
            std::nullopt);
}

TEST(PropertyListSize, LargeDictionariesTakeNoQuadraticTime) {
  constexpr int kCount = 200000;  // minutes, if each key were looked up in a list
  std::string distinct;
  for (int i = 0; i < kCount; ++i) distinct.append("k").append(std::to_string(i)).append("=v;");
  EXPECT_EQ(valueOf("{" + distinct + "}").asDictionary()->entries().size(), std::size_t{kCount});
  EXPECT_EQ(valueOf(xml("<dict>" + repeated("<key>a</key><true/>", kCount) + "</dict>")), dictionaryWith(true));
}

TEST(TextPropertyList, ReadsWhatOthersWrite) {
  EXPECT_EQ(valueOf("// first\n{ /* ; */ a = ( x, \"y z\", <0f BD\n77>, http://h/$_.-1, ); }\n"),
            dictionaryWith(PropertyListArray{"x", "y z", PropertyListData{"\x0f\xbd\x77"}, "http://h/$_.-1"}));
  EXPECT_EQ(valueOf("a=\"\\\"\\\\\\n\\101\\1018\\U00e9\\Ud83c\\Udfac\\q\\'\";"),
            dictionaryWith("\"\\\nAA8\xc3\xa9\xf0\x9f\x8e\xacq'"));
  EXPECT_EQ(valueOf("\"a\" = '\"';\n/* end */"), dictionaryWith("\""));
  EXPECT_EQ(valueOf("\xff\xfe" + wide("a = b;", 2, false)), dictionaryWith("b"));
  EXPECT_EQ(valueOf("{a=1;a=b;}"), dictionaryWith("b"));
}

TEST(TextPropertyList, RefusesDamageAndOtherFormats) {
  for (const std::string& bytes : {""s, std::string(512, '\0'), "SQLite format 3\0"s, "{\"a\": 1}"s,
                                   "<html><body>404</body></html>"s, "{a=b}"s, "{a=b;"s, "(a b)"s, "(<0g>)"s, "(\"\\)"s,
                                   "(\"\\Udfac\")"s, "(\"\\777\")"s, "(a) /*"s, "\xff = b;"s, "bplist01"s})
    EXPECT_EQ(parsePropertyList(bytes), std::nullopt) << bytes;
}

}  // namespace vantory
