// Writes the XML form as the platform's own tools do.
#include <set>

#include "base/PropertyListFormats.h"

namespace vantory {

namespace {

constexpr std::string_view kHeader =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n";
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

class XmlWriter {
 public:
  std::string document(const PropertyList& value) {
    out_ = kHeader;
    write(value);
    return std::move(out_) + "</plist>\n";
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

std::string writeXmlPropertyList(const PropertyList& value) {
  return XmlWriter().document(value);
}

}  // namespace vantory
