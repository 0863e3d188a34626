// Edits one number in the XML of settings.
#include "platform/posix/files/SettingsText.h"

#include <pugixml.hpp>
#include <sstream>

#include "platform/posix/files/Errors.h"

namespace vantory {
namespace {

constexpr const char* kNoSettings =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n<dict>\n</dict>\n</plist>\n";

pugi::xml_node nextElement(pugi::xml_node node) {
  do node = node.next_sibling();
  while (node && node.type() != pugi::node_element);
  return node;
}

// Behind the last entry, indented like those.
pugi::xml_node addedValue(pugi::xml_node dictionary, const std::string& key) {
  dictionary.append_child(pugi::node_pcdata).set_value("\t");
  dictionary.append_child("key").text().set(key.c_str());
  const pugi::xml_node value = dictionary.append_child("integer");
  dictionary.append_child(pugi::node_pcdata).set_value("\n");
  return value;
}

// The value that belongs to the key, added when there is none.
pugi::xml_node valueOf(pugi::xml_node dictionary, const std::string& key) {
  for (const pugi::xml_node candidate : dictionary.children("key"))
    if (key == candidate.text().get())
      if (const pugi::xml_node value = nextElement(candidate)) return value;
  return addedValue(dictionary, key);
}

}  // namespace

Result<std::string> withSetting(std::string_view settings, const std::string& key, int value, const std::string& path) {
  if (settings.empty()) settings = kNoSettings;
  pugi::xml_document document;
  const auto parsed = document.load_buffer(settings.data(), settings.size(), pugi::parse_full | pugi::parse_ws_pcdata);
  const pugi::xml_node dictionary = document.child("plist").child("dict");
  if (!parsed || parsed.encoding != pugi::encoding_utf8 || !dictionary)
    return errorWithText(std::errc::invalid_argument, path, "these settings are damaged or not in XML form");
  pugi::xml_node number = valueOf(dictionary, key);
  number.set_name("integer");
  number.remove_children();
  number.text().set(value);
  // As it was read, with comments and line ends.
  std::ostringstream bytes;
  for (const pugi::xml_node part : document.children()) {
    part.print(bytes, "", pugi::format_raw, pugi::encoding_utf8);
    bytes << '\n';
  }
  return bytes.str();
}

}  // namespace vantory
