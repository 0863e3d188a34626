// Tells by the first bytes in which form a property list is written.
#include "base/PropertyListBytes.h"

#include <algorithm>
#include <cstddef>

#include "base/PropertyListFormats.h"

namespace vantory {

namespace {

// In every encoding XML begins with "<", after a byte order mark, white space and the NUL bytes of wide characters.
bool looksLikeXml(std::string_view bytes) {
  using namespace std::string_view_literals;
  const std::size_t first = bytes.find_first_not_of("\xef\xbb\xbf\xfe\xff\0 \t\r\n"sv);
  return first != std::string_view::npos && bytes[first] == '<';
}

PropertyList parseAnyForm(std::string_view bytes) {
  switch (formOfPropertyList(bytes)) {
    case PropertyListForm::Binary:
      return parseBinaryPropertyList(bytes);
    case PropertyListForm::Xml:
      return parseXmlPropertyList(bytes);
    case PropertyListForm::Text:
      break;
  }
  std::string storage;
  return parseTextPropertyList(decodedText(bytes, storage));
}

}  // namespace

PropertyListForm formOfPropertyList(std::string_view bytes) {
  if (bytes.starts_with("bplist")) return PropertyListForm::Binary;
  return looksLikeXml(bytes) ? PropertyListForm::Xml : PropertyListForm::Text;
}

// Damage is thrown from deep inside and ends here.
std::optional<PropertyList> parsePropertyList(std::string_view bytes) {
  try {
    return parseAnyForm(bytes);
  } catch (const DamagedPropertyList&) {
    return std::nullopt;
  }
}

std::optional<int> lineOfDamage(std::string_view bytes) {
  std::optional<std::size_t> offset;
  std::string storage;
  try {
    parseAnyForm(bytes);
  } catch (const DamagedPropertyList& damage) {
    offset = damage.offset;
  }
  if (!offset) return std::nullopt;
  const std::string_view text = looksLikeXml(bytes) ? bytes : decodedText(bytes, storage);
  const std::string_view sound = text.substr(0, *offset);
  return 1 + static_cast<int>(std::count(sound.begin(), sound.end(), '\n'));
}

}  // namespace vantory
