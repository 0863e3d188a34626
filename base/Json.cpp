// Writes values as JSON.
#include "base/Json.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <ctime>

#include "base/PropertyListFormats.h"
#include "base/Text.h"

namespace vantory {

namespace {

constexpr char kHexDigits[] = "0123456789abcdef";
// Writes one value after the other behind what is there.
class Writer {
 public:
  explicit Writer(std::string& text) : text_(text) {}

  void write(const PropertyList& value) {
    std::visit([this](const auto& content) { add(content); }, value.content());
  }

 private:
  void add(bool value) { text_ += value ? "true" : "false"; }
  void add(std::int64_t value) { text_ += std::to_string(value); }
  void add(std::uint64_t value) { text_ += std::to_string(value); }
  // JSON has neither infinity nor what is no number.
  void add(double value) {
    std::array<char, 32> digits;
    const char* end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    text_.append(std::isfinite(value) ? std::string_view(digits.data(), end) : "null");
  }
  // JSON is UTF-8; other bytes travel as data.
  void add(const std::string& text) {
    if (isUtf8(text))
      addQuoted(text);
    else
      add(PropertyListData{text});
  }
  void add(const PropertyListData& data) {
    text_ += "{\"base64\": ";
    addQuoted(base64(data.bytes));
    text_ += '}';
  }
  void add(const Timestamp& date) {
    const std::time_t seconds = date.seconds;
    std::tm parts{};
    std::array<char, 64> text;
    if (!gmtime_r(&seconds, &parts))
      text_ += "null";
    else
      addQuoted({text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts)});
  }
  void add(const PropertyListArray& array) {
    addList('[', array, ']', [this](const PropertyList& element) { write(element); });
  }
  void add(const PropertyListDictionary& dictionary) {
    addList('{', dictionary.entries(), '}', [this](const PropertyListDictionary::Entry& entry) {
      addQuoted(entry.first);
      text_ += ": ";
      write(entry.second);
    });
  }

  // Each element stands on a line of its own, one level further in; an empty list on one line.
  template <class List, class Add>
  void addList(char opening, const List& list, char closing, Add addElement) {
    text_ += opening;
    indent_ += 2;
    bool first = true;
    for (const auto& element : list) {
      if (!first) text_ += ',';
      first = false;
      startLine();
      addElement(element);
    }
    indent_ -= 2;
    if (!first) startLine();
    text_ += closing;
  }

  void startLine() { text_.append(1, '\n').append(indent_, ' '); }

  void addQuoted(std::string_view text) {
    text_ += '"';
    while (!text.empty()) {
      const std::string_view character = text.substr(0, std::max<std::size_t>(utf8CharacterLength(text), 1));
      if (isControlCharacter(character))
        addEscaped(character);
      else if (character == "\"" || character == "\\")
        text_.append(1, '\\').append(character);
      else
        text_ += character;
      text.remove_prefix(character.size());
    }
    text_ += '"';
  }

  // Of one to three bytes, and so of 16 bits at the most.
  void addEscaped(std::string_view character) {
    const char32_t code = codeOf(character);
    text_ += "\\u";
    for (const unsigned shift : {12U, 8U, 4U, 0U}) text_ += kHexDigits[code >> shift & 15U];
  }

  std::string& text_;
  std::size_t indent_ = 0;
};

}  // namespace

std::string writeJson(const PropertyList& value) {
  std::string text;
  Writer(text).write(value);
  return text;
}

}  // namespace vantory
