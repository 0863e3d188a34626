// Trims, folds, splits and escapes bytes that should be UTF-8.
#include "base/Text.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <locale>
#include <stdexcept>
#include <utility>

namespace vantory {

namespace {

constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";
// The blanks of Unicode beyond ASCII.
constexpr std::string_view kWideWhiteSpace[] = {"\u0085", "\u00a0", "\u1680", "\u2000", "\u2001", "\u2002", "\u2003",
                                                "\u2004", "\u2005", "\u2006", "\u2007", "\u2008", "\u2009", "\u200a",
                                                "\u2028", "\u2029", "\u202f", "\u205f", "\u3000"};
constexpr char kHexDigits[] = "0123456789abcdef";

unsigned char byteAt(std::string_view bytes, std::size_t index) {
  return static_cast<unsigned char>(bytes[index]);
}

char lowerCased(char letter) {
  return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

bool isForbiddenInXml(unsigned char byte) {
  return byte < 0x20 && byte != '\t' && byte != '\n' && byte != '\r';
}

// The length that a UTF-8 sequence with this first byte has; 0 where none begins.
std::size_t announcedLength(unsigned char first) {
  if (first < 0x80) return 1;
  if (first >= 0xc2 && first <= 0xdf) return 2;
  if (first >= 0xe0 && first <= 0xef) return 3;
  if (first >= 0xf0 && first <= 0xf4) return 4;
  return 0;
}

// Overlong forms, surrogates and what lies above U+10FFFF show in the second byte.
bool isSecondByte(unsigned char first, unsigned char second) {
  const unsigned char lowest = first == 0xe0 ? 0xa0 : first == 0xf0 ? 0x90 : 0x80;
  const unsigned char highest = first == 0xed ? 0x9f : first == 0xf4 ? 0x8f : 0xbf;
  return second >= lowest && second <= highest;
}

constexpr std::uint64_t inEveryByte(std::uint64_t byte) {
  return byte * 0x0101010101010101;
}

bool isAscii(std::uint64_t block) {
  return (block & inEveryByte(0x80)) == 0;
}

// No control characters: adding so much to each byte sets its highest bit from the given value on.
bool isPlainAscii(std::uint64_t block) {
  const std::uint64_t from0x20 = block + inEveryByte(0x80 - 0x20);
  const std::uint64_t from0x7f = block + inEveryByte(0x80 - 0x7f);
  return isAscii(block) && (from0x20 & ~from0x7f & inEveryByte(0x80)) == inEveryByte(0x80);
}

// Past blocks of eight bytes of a kind that most text consists of.
std::size_t past(bool (*isCommon)(std::uint64_t block), std::string_view bytes, std::size_t start) {
  std::uint64_t block;
  for (; bytes.size() - start >= sizeof block; start += sizeof block) {
    std::memcpy(&block, bytes.data() + start, sizeof block);
    if (!isCommon(block)) break;
  }
  return start;
}

// The length of the blank at the start, or the end, of a text; 0 when none is there.
std::size_t blankAtStart(std::string_view text) {
  if (text.empty()) return 0;
  if (byteAt(text, 0) < 0x80) return kWhiteSpace.find(text.front()) != std::string_view::npos ? 1 : 0;
  const auto* const blank = std::ranges::find_if(kWideWhiteSpace, [&](auto each) { return text.starts_with(each); });
  return blank != std::end(kWideWhiteSpace) ? blank->size() : 0;
}

std::size_t blankAtEnd(std::string_view text) {
  if (text.empty()) return 0;
  if (byteAt(text, text.size() - 1) < 0x80) return kWhiteSpace.find(text.back()) != std::string_view::npos ? 1 : 0;
  const auto* const blank = std::ranges::find_if(kWideWhiteSpace, [&](auto each) { return text.ends_with(each); });
  return blank != std::end(kWideWhiteSpace) ? blank->size() : 0;
}

// What the C library knows of letters, whatever language the user has; null where it has no such locale. Read when a
// name first needs it.
const std::ctype<wchar_t>* letters() {
  static const std::locale* const locale = []() -> const std::locale* {
    try {
      return new std::locale(std::locale::classic(), "C.UTF-8", std::locale::ctype);
    } catch (const std::runtime_error&) {
      return nullptr;
    }
  }();
  return locale ? &std::use_facet<std::ctype<wchar_t>>(*locale) : nullptr;
}

// The character that begins the text, as if written small, is taken from it. A byte that is no UTF-8 stands for itself.
wchar_t takeFolded(std::string_view& text) {
  const std::size_t length = utf8CharacterLength(text);
  const std::string_view character = text.substr(0, std::max<std::size_t>(length, 1));
  text.remove_prefix(character.size());
  if (length < 2) return length == 1 ? lowerCased(character[0]) : byteAt(character, 0);
  const auto letter = static_cast<wchar_t>(codeOf(character));
  // By way of the capital: some have two small forms.
  const auto* const known = letters();
  return known ? known->tolower(known->toupper(letter)) : letter;
}

void appendEscaped(std::string& text, std::string_view bytes) {
  for (const char byte : bytes) {
    if (byte == '\n')
      text += "\\n";
    else if (byte == '\t')
      text += "\\t";
    else if (byte == '\r')
      text += "\\r";
    else {
      const auto value = static_cast<unsigned char>(byte);
      text += {'\\', 'x', kHexDigits[value >> 4], kHexDigits[value & 15]};
    }
  }
}

}  // namespace

std::string_view trimmed(std::string_view text) {
  while (const std::size_t length = blankAtStart(text)) text.remove_prefix(length);
  while (const std::size_t length = blankAtEnd(text)) text.remove_suffix(length);
  return text;
}

std::string_view shortened(std::string_view text, std::size_t length) {
  constexpr std::size_t kLongestCharacter = 4;
  if (text.size() <= length) return text;
  // From the cut back to where the character that it would split begins.
  for (std::size_t back = 0; back < std::min(kLongestCharacter, length); ++back)
    if ((static_cast<unsigned char>(text[length - back]) & 0xC0) != 0x80) return text.substr(0, length - back);
  return text.substr(0, length);
}

std::string lowerCased(std::string_view text) {
  std::string lower(text);
  for (char& letter : lower) letter = lowerCased(letter);
  return lower;
}

int compareIgnoringCase(std::string_view left, std::string_view right) {
  return lowerCased(left).compare(lowerCased(right));
}

// Bytes decide only between names that are the same to a reader.
int compareNames(std::string_view left, std::string_view right) {
  std::string_view restOfLeft = left, restOfRight = right;
  while (!restOfLeft.empty() && !restOfRight.empty()) {
    const wchar_t one = takeFolded(restOfLeft), other = takeFolded(restOfRight);
    if (one != other) return one < other ? -1 : 1;
  }
  if (restOfLeft.empty() != restOfRight.empty()) return restOfLeft.empty() ? -1 : 1;
  return left.compare(right);
}

std::vector<std::string> split(std::string_view text, char separator) {
  std::vector<std::string> pieces;
  std::size_t start = 0;
  for (std::size_t end = text.find(separator); end != std::string_view::npos; end = text.find(separator, start)) {
    pieces.emplace_back(text.substr(start, end - start));
    start = end + 1;
  }
  pieces.emplace_back(text.substr(start));
  return pieces;
}

std::size_t utf8CharacterLength(std::string_view text) {
  if (text.empty()) return 0;
  const unsigned char first = byteAt(text, 0);
  const std::size_t length = announcedLength(first);
  if (length < 2) return length;
  if (length > text.size() || !isSecondByte(first, byteAt(text, 1))) return 0;
  const auto continues = [](char byte) { return (static_cast<unsigned char>(byte) & 0xc0) == 0x80; };
  return std::ranges::all_of(text.substr(2, length - 2), continues) ? length : 0;
}

char32_t codeOf(std::string_view character) {
  char32_t code = byteAt(character, 0);
  if (character.size() > 1) code &= 0x7fU >> character.size();
  for (std::size_t i = 1; i < character.size(); ++i) code = code << 6 | (byteAt(character, i) & 0x3fU);
  return code;
}

bool isControlCharacter(std::string_view character) {
  // Controls, marks of direction, ends of lines and paragraphs, turns of the text.
  constexpr std::pair<char32_t, char32_t> kRuns[] = {{0, 0x1f},        {0x7f, 0x9f},     {0x61c, 0x61c},
                                                     {0x200e, 0x200f}, {0x2028, 0x202e}, {0x2066, 0x206f}};
  const char32_t code = codeOf(character);
  return std::ranges::any_of(kRuns, [code](const auto& run) { return code >= run.first && code <= run.second; });
}

// Most text is ASCII, which goes by in blocks.
bool isUtf8(std::string_view bytes) {
  for (std::size_t i = past(isAscii, bytes, 0); i < bytes.size(); i = past(isAscii, bytes, i)) {
    const std::size_t length = utf8CharacterLength(bytes.substr(i));
    if (length == 0) return false;
    i += length;
  }
  return true;
}

bool xmlCanHold(std::string_view text) {
  constexpr std::string_view kNoCharacters[] = {"\xef\xbf\xbe", "\xef\xbf\xbf"};  // U+FFFE and U+FFFF
  if (std::any_of(text.begin(), text.end(), isForbiddenInXml)) return false;
  for (const std::string_view none : kNoCharacters)
    if (text.find(none) != std::string_view::npos) return false;
  return isUtf8(text);
}

std::size_t utf16Length(std::string_view text) {
  std::size_t units = 0;
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t next = past(isAscii, text, i);
    units += next - i;
    i = next;
    if (i == text.size()) break;
    const std::size_t length = utf8CharacterLength(text.substr(i));
    // Characters of four bytes are those that take a pair of units.
    units += length == 4 ? 2 : 1;
    i += std::max<std::size_t>(length, 1);
  }
  return units;
}

std::string joined(const std::vector<std::string>& texts, std::string_view between) {
  std::string all;
  for (const std::string& text : texts) {
    if (&text != &texts.front()) all += between;
    all += text;
  }
  return all;
}

bool standsInQuotes(std::string_view text) {
  return text == printable(text) && text.find_first_of("\"$\\`!") == std::string_view::npos;
}

// Ordinary text is taken in blocks, the rest by characters.
std::string printable(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  for (std::size_t i = 0; i < bytes.size();) {
    const std::size_t next = past(isPlainAscii, bytes, i);
    text += bytes.substr(i, next - i);
    i = next;
    if (i == bytes.size()) break;
    const std::size_t length = utf8CharacterLength(bytes.substr(i));
    const std::string_view character = bytes.substr(i, std::max<std::size_t>(length, 1));
    if (length == 0 || isControlCharacter(character))
      appendEscaped(text, character);
    else
      text += character;
    i += character.size();
  }
  return text;
}

}  // namespace vantory
