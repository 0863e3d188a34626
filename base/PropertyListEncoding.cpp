// The encodings of text in property lists.
#include "base/PropertyListFormats.h"
#include "base/Text.h"

namespace vantory {

namespace {

bool isHighSurrogate(char32_t unit) {
  return unit >= 0xd800 && unit < 0xdc00;
}
bool isLowSurrogate(char32_t unit) {
  return unit >= 0xdc00 && unit < 0xe000;
}

char32_t unitAt(std::string_view bytes, ByteOrder order) {
  const unsigned char first = bytes[0];
  const unsigned char second = bytes[1];
  return order == ByteOrder::BigEndian ? first << 8 | second : second << 8 | first;
}

// The character is known to be one that Unicode has.
void appendUtf8(char32_t character, std::string& text) {
  const auto add = [&text](char32_t byte) { text += static_cast<char>(byte); };
  if (character < 0x80) {
    add(character);
    return;
  }
  if (character < 0x800) {
    add(0xc0 | character >> 6);
  } else {
    if (character < 0x10000) {
      add(0xe0 | character >> 12);
    } else {
      add(0xf0 | character >> 18);
      add(0x80 | (character >> 12 & 0x3f));
    }
    add(0x80 | (character >> 6 & 0x3f));
  }
  add(0x80 | (character & 0x3f));
}

}  // namespace

std::string_view decodedText(std::string_view bytes, std::string& storage) {
  if (bytes.starts_with("\xfe\xff")) return storage = utf8FromUtf16(bytes.substr(2), ByteOrder::BigEndian);
  if (bytes.starts_with("\xff\xfe")) return storage = utf8FromUtf16(bytes.substr(2), ByteOrder::LittleEndian);
  if (bytes.starts_with("\xef\xbb\xbf")) bytes.remove_prefix(3);
  if (!isUtf8(bytes)) throw DamagedPropertyList();
  return bytes;
}

std::string utf8FromUtf16(std::string_view bytes, ByteOrder order) {
  if (bytes.size() % 2 != 0) throw DamagedPropertyList();
  std::string text;
  text.reserve(bytes.size() / 2);
  char32_t high = 0;
  for (; !bytes.empty(); bytes.remove_prefix(2)) {
    const char32_t unit = unitAt(bytes, order);
    // The second half of a pair stands behind a first half and nowhere else.
    if (isLowSurrogate(unit) != (high != 0)) throw DamagedPropertyList();
    if (isHighSurrogate(unit)) {
      high = unit;
    } else if (high) {
      appendUtf8(0x10000 + ((high - 0xd800) << 10) + (unit - 0xdc00), text);
      high = 0;
    } else {
      appendUtf8(unit, text);
    }
  }
  if (high) throw DamagedPropertyList();
  return text;
}

}  // namespace vantory
