// Puts values into property lists, and reads what came of it before it answers.
#include "base/PropertyListEditing.h"

#include <algorithm>

#include "base/PropertyListBytes.h"
#include "base/PropertyListFormats.h"
#include "base/PropertyListXmlPlaces.h"
#include "base/Text.h"

namespace vantory {

namespace {

std::string written(const PropertyList& value, PropertyListForm form) {
  switch (form) {
    case PropertyListForm::Binary:
      return writeBinaryPropertyList(value);
    case PropertyListForm::Xml:
      return writeXmlPropertyList(value);
    case PropertyListForm::Text:
      break;
  }
  return writeTextWithData(value) + "\n";
}

// What the form makes of a value: in text every plain one is text, in XML a date has no fraction of a second.
std::optional<PropertyList> asHeldBy(PropertyListForm form, const PropertyList& value) {
  const auto held = parsePropertyList(written(PropertyListArray{value}, form));
  if (!held || !held->asArray() || held->asArray()->size() != 1) return std::nullopt;
  return held->asArray()->front();
}

// Whether texts may hold bytes that are no UTF-8, as they are or as octal escapes. Read, they are data.
bool mayQuoteBytes(std::string_view bytes) {
  std::string storage;
  const std::string_view text = decodedText(bytes, storage);
  for (std::size_t at = text.find('\\'); at < text.size(); at = text.find('\\', at + 2))
    if (const auto octal = text.substr(at + 1, 1); octal == "2" || octal == "3") return true;
  return !isUtf8(text);
}

// The blanks that the line begins with on which this place is.
std::string indentAt(std::string_view bytes, std::size_t place) {
  const std::size_t line = bytes.rfind('\n', place - 1) + 1;  // 0 where there is no line before
  const std::size_t end = std::min(bytes.find_first_not_of("\t ", line), place);
  return std::string(bytes.substr(line, end - line));
}

std::string elementFor(const PropertyList& value, std::size_t level) {
  std::string element = xmlElement(value, level);
  element.pop_back();
  return element.substr(level);
}

// None where the place is not found.
std::optional<std::string> withXmlValue(std::string bytes, const KeyPath& path, const PropertyList& value) {
  const auto place = placeInXml(bytes, path);
  if (!place) return std::nullopt;
  const std::string indent = indentAt(bytes, place->begin);
  const std::size_t level = indent.find_first_not_of('\t') == std::string::npos ? indent.size() : 0;
  std::string text = elementFor(value, level);
  if (place->isNew) {
    const auto* key = std::get_if<std::string>(&path.back());
    const std::string line = "\n" + indent;
    text = (key ? line + xmlKeyElement(*key) : "") + line + text;
  }
  return bytes.replace(place->begin, place->end - place->begin, text);
}

}  // namespace

// What does not read back as it should is written anew as a whole.
std::optional<std::string> editedPropertyList(std::string_view bytes, const std::vector<KeyEdit>& edits) {
  const PropertyListForm form = formOfPropertyList(bytes);
  auto wanted = parsePropertyList(bytes);
  std::optional<std::string> patched;
  if (form == PropertyListForm::Xml) patched = std::string(bytes);
  if (form == PropertyListForm::Text && wanted && mayQuoteBytes(bytes)) return std::nullopt;
  for (const auto& [path, value] : edits) {
    const auto held = asHeldBy(form, value);
    if (!wanted || !held) return std::nullopt;
    wanted = withValueAt(*wanted, path, *held);
    if (patched) patched = withXmlValue(std::move(*patched), path, *held);
  }
  if (!wanted) return std::nullopt;
  if (patched && parsePropertyList(*patched) == wanted) return patched;
  std::string whole = written(*wanted, form);
  if (parsePropertyList(whole) != wanted) return std::nullopt;
  return whole;
}

}  // namespace vantory
