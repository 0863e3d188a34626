// Reads the XML form. The parser neither fetches nor expands what a document type declares: a reference to it stays as
// text.
#include <charconv>
#include <cstdint>
#include <limits>
#include <pugixml.hpp>

#include "base/PropertyListFormats.h"
#include "base/Text.h"
#include "platform/FileSystem.h"

namespace vantory {

namespace {

[[noreturn]] void damaged() {
  throw DamagedPropertyList();
}

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

double realFrom(std::string_view text) {
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    if (text.starts_with('-')) damaged();
  }
  double value = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);  // takes "nan", "inf" and "infinity" too
  if (error != std::errc() || stop != end) damaged();
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

}  // namespace

PropertyList parseXmlPropertyList(std::string_view bytes) {
  // The parser's tree may take thirty times the memory of the text.
  if (bytes.size() > kLargestReadBytes) damaged();
  pugi::xml_document document;
  if (!document.load_buffer(bytes.data(), bytes.size(), pugi::parse_default | pugi::parse_ws_pcdata)) damaged();
  const pugi::xml_node root = document.first_child();
  if (std::string_view(root.name()) != "plist" || root.next_sibling()) damaged();
  const pugi::xml_node content = elementFrom(root.first_child());
  if (elementFrom(content.next_sibling())) damaged();
  return value(content, 0);
}

}  // namespace vantory
