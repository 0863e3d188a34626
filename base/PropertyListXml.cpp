// Reads the XML form. The parser neither fetches nor expands what a document type declares: a reference to it stays as
// text.

#include <fast_float/fast_float.h>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <pugixml.hpp>
#include <set>

#include "base/PropertyListBytes.h"
#include "base/PropertyListFormats.h"
#include "base/Text.h"

namespace vantory {

namespace {

[[noreturn]] void damaged() {
  throw DamagedPropertyList();
}

// Decimal, or hexadecimal behind "0x"; unsigned only where the signed range ends.
PropertyList integerFrom(std::string_view text) {
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
  if (hexadecimal) text.remove_prefix(2);
  std::uint64_t magnitude = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, magnitude, hexadecimal ? 16 : 10);
  if (error != std::errc() || stop != end) damaged();
  constexpr std::uint64_t kLargest = std::numeric_limits<std::int64_t>::max();
  if (negative && magnitude > kLargest + 1) damaged();
  if (negative) return static_cast<std::int64_t>(0 - magnitude);
  if (magnitude <= kLargest) return static_cast<std::int64_t>(magnitude);
  return magnitude;
}

// A plus sign in front is allowed, which from_chars() does not take.
double realFrom(std::string_view text) {
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    if (text.starts_with('-')) damaged();
  }
  double value = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = fast_float::from_chars(text.data(), end, value);  // takes "nan", "inf" and "infinity" too
  if (error != std::errc() || stop != end) damaged();
  // A number too large to be held comes as infinity.
  if (std::isinf(value) && text.find_first_of("0123456789") != std::string_view::npos) damaged();
  return value;
}

// `node`, or the first element after it; null when there is none. Of text only white space may stand between.
pugi::xml_node elementFrom(pugi::xml_node node) {
  for (; node && node.type() != pugi::node_element; node = node.next_sibling())
    if (!trimmed(node.value()).empty()) damaged();
  return node;
}

// Comments and CDATA sections cut the text of an element into pieces.
std::string textIn(pugi::xml_node element) {
  std::string text;
  for (const pugi::xml_node piece : element) {
    if (piece.type() == pugi::node_element) damaged();
    text += piece.value();
  }
  if (!isUtf8(text)) damaged();
  return text;
}

// Everything but text, arrays and dictionaries.
PropertyList plainValue(std::string_view type, std::string_view content) {
  if (type == "data") return PropertyListData{parseBase64(content)};
  if (type == "integer") return integerFrom(content);
  if (type == "real") return realFrom(content);
  if (type == "date") return parsePropertyListDate(content);
  if (!content.empty()) damaged();
  if (type == "true") return true;
  if (type == "false") return false;
  damaged();
}

PropertyList array(pugi::xml_node element, int depth);
PropertyList dictionary(pugi::xml_node element, int depth);

// `depth` is the number of arrays and dictionaries around the value.
PropertyList value(pugi::xml_node element, int depth) {
  const std::string_view type = element.name();
  if (type == "array") return array(element, depth + 1);
  if (type == "dict") return dictionary(element, depth + 1);
  std::string text = textIn(element);
  if (type == "string") return text;
  return plainValue(type, trimmed(text));
}

PropertyList array(pugi::xml_node element, int depth) {
  if (depth > kMaximumPropertyListDepth) damaged();
  PropertyListArray values;
  for (pugi::xml_node item = elementFrom(element.first_child()); item; item = elementFrom(item.next_sibling()))
    values.push_back(value(item, depth));
  return values;
}

PropertyList dictionary(pugi::xml_node element, int depth) {
  if (depth > kMaximumPropertyListDepth) damaged();
  std::vector<PropertyListDictionary::Entry> entries;
  for (pugi::xml_node item = elementFrom(element.first_child()); item; item = elementFrom(item.next_sibling())) {
    if (std::string_view(item.name()) != "key") damaged();
    std::string key = textIn(item);
    item = elementFrom(item.next_sibling());
    entries.emplace_back(std::move(key), value(item, depth));
  }
  return PropertyListDictionary(std::move(entries));
}

constexpr std::string_view kHeader =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n";
// Characters of base64 on a line.
constexpr std::size_t kDataLineLength = 68;

// What stands for a key that XML cannot hold: its bytes percent-escaped, told apart from all keys in `taken`.
std::string escapedKey(std::string_view key, const std::set<std::string_view>& taken) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string name;
  for (const unsigned char byte : key) {
    if (byte >= 0x20 && byte < 0x7f && byte != '%') {
      name += static_cast<char>(byte);
    } else {
      name += {'%', kDigits[byte >> 4], kDigits[byte & 0xf]};
    }
  }
  // No escaped key ends like this, so two of them stay apart too.
  while (taken.contains(name)) name += '%';
  return name;
}

// Writes values line by line, one tab for each level.
class XmlWriter {
 public:
  std::string document(const PropertyList& value) {
    out_ = kHeader;
    write(value);
    return std::move(out_) + "</plist>\n";
  }

  std::string elements(const PropertyList& value, std::size_t level) {
    level_ = level;
    write(value);
    return std::move(out_);
  }

  std::string keyElement(std::string_view key) {
    element("key", key);
    out_.pop_back();
    return std::move(out_);
  }

 private:
  void write(const PropertyList& value) {
    std::visit([this](const auto& content) { put(content); }, value.content());
  }

  void put(bool value) { line(value ? "<true/>" : "<false/>"); }
  void put(std::int64_t value) { element("integer", std::to_string(value)); }
  void put(std::uint64_t value) { element("integer", std::to_string(value)); }
  void put(double value) { element("real", propertyListReal(value)); }
  void put(const Timestamp& value) { element("date", propertyListDate(value)); }

  void put(const std::string& value) {
    if (xmlCanHold(value)) {
      element("string", value);
    } else {
      put(PropertyListData{value});
    }
  }

  void put(const PropertyListData& value) {
    const std::string text = base64(value.bytes);
    line("<data>");
    for (std::size_t at = 0; at < text.size(); at += kDataLineLength) {
      line(std::string_view(text).substr(at, kDataLineLength));
    }
    line("</data>");
  }

  void put(const PropertyListArray& values) {
    if (values.empty()) return line("<array/>");
    line("<array>");
    ++level_;
    for (const PropertyList& value : values) write(value);
    --level_;
    line("</array>");
  }

  void put(const PropertyListDictionary& dictionary) {
    if (dictionary.empty()) return line("<dict/>");
    line("<dict>");
    ++level_;
    std::set<std::string_view> taken;  // filled when the first key needs it
    for (const auto& [key, value] : dictionary.entries()) {
      if (xmlCanHold(key)) {
        element("key", key);
      } else {
        if (taken.empty())
          for (const auto& entry : dictionary.entries()) taken.insert(entry.first);
        element("key", escapedKey(key, taken));
      }
      write(value);
    }
    --level_;
    line("</dict>");
  }

  void line(std::string_view content) { out_.append(level_, '\t').append(content) += '\n'; }

  void element(std::string_view name, std::string_view text) {
    out_.append(level_, '\t').append("<").append(name).append(">");
    escape(text);
    out_.append("</").append(name).append(">\n");
  }

  // Only what would end a text, or change when it is read.
  void escape(std::string_view text) {
    for (const char character : text) {
      if (character == '<') {
        out_ += "&lt;";
      } else if (character == '>') {
        out_ += "&gt;";
      } else if (character == '&') {
        out_ += "&amp;";
      } else if (character == '\r') {
        out_ += "&#13;";  // readers turn a bare one into a line feed
      } else {
        out_ += character;
      }
    }
  }

  std::string out_;
  std::size_t level_ = 0;
};

}  // namespace

PropertyList parseXmlPropertyList(std::string_view bytes) {
  // The parser's tree may take thirty times the memory of the text.
  if (bytes.size() > kLargestXml) damaged();
  pugi::xml_document document;
  const auto parsed = document.load_buffer(bytes.data(), bytes.size(), pugi::parse_default | pugi::parse_ws_pcdata);
  if (!parsed) throw DamagedPropertyList{static_cast<std::size_t>(parsed.offset)};
  const pugi::xml_node root = document.first_child();
  if (std::string_view(root.name()) != "plist" || root.next_sibling()) damaged();
  const pugi::xml_node content = elementFrom(root.first_child());
  if (elementFrom(content.next_sibling())) damaged();
  return value(content, 0);
}

std::string xmlElement(const PropertyList& value, std::size_t level) {
  return XmlWriter().elements(value, level);
}

std::string xmlKeyElement(std::string_view key) {
  return XmlWriter().keyElement(key);
}

std::string writeXmlPropertyList(const PropertyList& value) {
  return XmlWriter().document(value);
}

}  // namespace vantory
