// The old text notation: { key = value; }, ( value, value ), <0fbd77>, words and quoted strings. Also as the files of
// translated texts have it: the pairs of a dictionary without its braces.
#include <algorithm>
#include <cstdint>

#include "base/PropertyListBytes.h"
#include "base/PropertyListFormats.h"
#include "base/Text.h"

namespace vantory {

namespace {

[[noreturn]] void damaged() {
  throw DamagedPropertyList();
}

bool isLetterOrDigit(char character) {
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
         (character >= '0' && character <= '9');
}

bool isOctalDigit(char character) {
  return character >= '0' && character <= '7';
}

// What may stand without quotes. The writer quotes all but letters and digits, as other writers do.
bool isWordCharacter(char character) {
  return isLetterOrDigit(character) || std::string_view("_$/:.-").find(character) != std::string_view::npos;
}

unsigned hexadecimalDigit(char character) {
  if (character >= '0' && character <= '9') return static_cast<unsigned>(character - '0');
  if (character >= 'a' && character <= 'f') return static_cast<unsigned>(character - 'a' + 10);
  if (character >= 'A' && character <= 'F') return static_cast<unsigned>(character - 'A' + 10);
  damaged();
}

// Reads by recursive descent: each function takes what it understands from the front of the rest.
class TextReader {
 public:
  explicit TextReader(std::string_view text) : rest_(text) {}

  PropertyList read() {
    const std::size_t length = rest_.size();
    try {
      return document();
    } catch (DamagedPropertyList& damage) {
      damage.offset = length - rest_.size();
      throw;
    }
  }

 private:
  PropertyList document() {
    skipBetween();
    PropertyList result = take('{') ? dictionary(1) : take('(') ? array(1) : pairsWithoutBraces();
    skipBetween();
    if (!rest_.empty()) damaged();
    return result;
  }

  bool startsWith(char character) const { return rest_.starts_with(character); }

  bool take(char character) {
    if (!startsWith(character)) return false;
    rest_.remove_prefix(1);
    return true;
  }

  void expect(char character) {
    skipBetween();
    if (!take(character)) damaged();
  }

  char takeCharacter() {
    if (rest_.empty()) damaged();
    const char character = rest_.front();
    rest_.remove_prefix(1);
    return character;
  }

  // White space and comments.
  void skipBetween() {
    for (;;) {
      rest_.remove_prefix(std::min(rest_.find_first_not_of(" \t\r\n\v\f"), rest_.size()));
      if (rest_.starts_with("//")) {
        rest_.remove_prefix(std::min(rest_.find_first_of("\r\n"), rest_.size()));
      } else if (rest_.starts_with("/*")) {
        const std::size_t end = rest_.find("*/", 2);
        if (end == std::string_view::npos) damaged();
        rest_.remove_prefix(end + 2);
      } else {
        return;
      }
    }
  }

  // `depth` is the number of arrays and dictionaries around the value.
  PropertyList value(int depth) {
    skipBetween();
    if (take('{')) return dictionary(depth + 1);
    if (take('(')) return array(depth + 1);
    if (take('<')) return data();
    return textValue(text());
  }

  PropertyList dictionary(int depth) {
    std::vector<PropertyListDictionary::Entry> entries;
    if (depth > kMaximumPropertyListDepth) damaged();
    for (skipBetween(); !take('}'); skipBetween()) entries.push_back(pair(depth));
    return PropertyListDictionary(std::move(entries));
  }

  // At least one pair: an empty text is damaged.
  PropertyList pairsWithoutBraces() {
    std::vector<PropertyListDictionary::Entry> entries;
    do {
      entries.push_back(pair(1));
      skipBetween();
    } while (!rest_.empty());
    return PropertyListDictionary(std::move(entries));
  }

  // The semicolon also stands behind the last pair.
  PropertyListDictionary::Entry pair(int depth) {
    std::string key = text();
    expect('=');
    PropertyListDictionary::Entry entry(std::move(key), value(depth));
    expect(';');
    return entry;
  }

  // A comma may stand behind the last value.
  PropertyList array(int depth) {
    if (depth > kMaximumPropertyListDepth) damaged();
    PropertyListArray values;
    for (skipBetween(); !take(')'); skipBetween()) {
      values.push_back(value(depth));
      skipBetween();
      if (!take(',') && !startsWith(')')) damaged();
    }
    return values;
  }

  // Behind the "<": pairs of hexadecimal digits, blanks between them as one likes.
  PropertyList data() {
    std::string bytes;
    for (skipBetween(); !take('>'); skipBetween()) {
      const unsigned high = hexadecimalDigit(takeCharacter());
      bytes += static_cast<char>(high << 4 | hexadecimalDigit(takeCharacter()));
    }
    return PropertyListData{std::move(bytes)};
  }

  // A bare word, or a text in quotes of either kind.
  std::string text() {
    if (startsWith('"') || startsWith('\'')) return quotedText(takeCharacter());
    std::size_t length = 0;
    while (length < rest_.size() && isWordCharacter(rest_[length])) ++length;
    if (length == 0) damaged();
    const std::string word(rest_.substr(0, length));
    rest_.remove_prefix(length);
    return word;
  }

  // Quotes of the other kind may stand within.
  std::string quotedText(char quote) {
    std::string text;
    for (char character; (character = takeCharacter()) != quote;) {
      if (character == '\\') {
        appendEscape(text);
      } else {
        text += character;
      }
    }
    return text;
  }

  void appendEscape(std::string& text) {
    const char character = takeCharacter();
    switch (character) {
      case 'a':
        text += '\a';
        break;
      case 'b':
        text += '\b';
        break;
      case 'f':
        text += '\f';
        break;
      case 'n':
        text += '\n';
        break;
      case 'r':
        text += '\r';
        break;
      case 't':
        text += '\t';
        break;
      case 'v':
        text += '\v';
        break;
      case 'U':
        appendUnit(text);
        break;
      default:
        if (isOctalDigit(character)) {
          appendOctal(character, text);
        } else {
          text += character;
        }
    }
  }

  // One to three octal digits are one byte.
  void appendOctal(char first, std::string& text) {
    int byte = first - '0';
    for (int i = 0; i < 2 && !rest_.empty() && isOctalDigit(rest_.front()); ++i)
      byte = byte * 8 + (takeCharacter() - '0');
    if (byte > 0xff) damaged();
    text += static_cast<char>(byte);
  }

  // Four hexadecimal digits are one unit of UTF-16; a character beyond takes two escapes.
  void appendUnit(std::string& text) {
    const std::uint32_t unit = takeUnit();
    std::string units{static_cast<char>(unit >> 8), static_cast<char>(unit & 0xff)};
    if (unit >= 0xd800 && unit < 0xdc00) {
      if (takeCharacter() != '\\' || takeCharacter() != 'U') damaged();
      const std::uint32_t low = takeUnit();
      units += {static_cast<char>(low >> 8), static_cast<char>(low & 0xff)};
    }
    text += utf8FromUtf16(units, ByteOrder::BigEndian);
  }

  std::uint32_t takeUnit() {
    std::uint32_t unit = 0;
    for (int i = 0; i < 4; ++i) unit = unit << 4 | hexadecimalDigit(takeCharacter());
    return unit;
  }

  std::string_view rest_;
};

// Writes one value; what an array or a dictionary holds stands on lines of its own, by level.
class TextWriter {
 public:
  enum class Bytes { QuotedWhereText, Hexadecimal };

  explicit TextWriter(Bytes bytes) : bytes_(bytes) {}
  std::string document(const PropertyList& value) {
    write(value);
    return std::move(out_);
  }

 private:
  void write(const PropertyList& value) {
    std::visit([this](const auto& content) { put(content); }, value.content());
  }

  void put(bool value) { out_ += value ? '1' : '0'; }
  void put(std::int64_t value) { put(std::to_string(value)); }
  void put(std::uint64_t value) { put(std::to_string(value)); }
  void put(double value) { put(propertyListReal(value)); }
  void put(const Timestamp& value) { put(propertyListDate(value)); }

  void put(const PropertyListData& value) {
    if (const auto text = textOf(value); text && bytes_ == Bytes::QuotedWhereText) return put(*text);
    out_ += '<';
    for (const unsigned char byte : value.bytes) {
      constexpr std::string_view kDigits = "0123456789abcdef";
      out_ += kDigits[byte >> 4];
      out_ += kDigits[byte & 0xf];
    }
    out_ += '>';
  }

  void put(const PropertyListArray& values) {
    out_ += '(';
    ++level_;
    for (const PropertyList& value : values) {
      if (&value != &values.front()) out_ += ',';
      beginLine();
      write(value);
    }
    --level_;
    beginLine();
    out_ += ')';
  }

  void put(const PropertyListDictionary& dictionary) {
    out_ += '{';
    ++level_;
    for (const auto& [key, value] : dictionary.entries()) {
      beginLine();
      put(key);
      out_ += " = ";
      write(value);
      out_ += ';';
    }
    --level_;
    beginLine();
    out_ += '}';
  }

  void put(const std::string& text) {
    const bool word = !text.empty() && std::all_of(text.begin(), text.end(), isLetterOrDigit);
    if (word) {
      out_ += text;
    } else {
      out_ += '"';
      quote(text);
      out_ += '"';
    }
  }

  // Characters beyond ASCII stay as they are; what is no UTF-8 is escaped byte by byte.
  void quote(std::string_view text) {
    while (!text.empty()) {
      const std::size_t length = utf8CharacterLength(text);
      if (length > 1) {
        out_.append(text.substr(0, length));
      } else {
        putByte(static_cast<unsigned char>(text.front()));
      }
      text.remove_prefix(length == 0 ? 1 : length);
    }
  }

  void putByte(unsigned char byte) {
    if (byte == '"' || byte == '\\') {
      out_ += {'\\', static_cast<char>(byte)};
    } else if (byte == '\n') {
      out_ += "\\n";
    } else if (byte >= 0x20 && byte < 0x7f) {
      out_ += static_cast<char>(byte);
    } else {
      const auto digit = [byte](int shift) { return static_cast<char>('0' + (byte >> shift & 7)); };
      out_ += {'\\', digit(6), digit(3), digit(0)};
    }
  }

  void beginLine() { out_.append("\n").append(4 * level_, ' '); }

  const Bytes bytes_;
  std::string out_;
  std::size_t level_ = 0;
};

}  // namespace

PropertyList parseTextPropertyList(std::string_view utf8) {
  return TextReader(utf8).read();
}

std::string writeTextPropertyList(const PropertyList& value) {
  return TextWriter(TextWriter::Bytes::QuotedWhereText).document(value);
}

std::string writeTextWithData(const PropertyList& value) {
  return TextWriter(TextWriter::Bytes::Hexadecimal).document(value);
}

}  // namespace vantory
