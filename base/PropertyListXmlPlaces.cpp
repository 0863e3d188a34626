// Finds where in an XML property list a value is written. The bytes are known to be a property list; what is overlooked
// here is found when the result is read again.
#include "base/PropertyListXmlPlaces.h"

#include <string>

#include "base/PropertyListFormats.h"

namespace vantory {

namespace {

struct Tag {
  enum class Kind { Opening, Closing, Empty };
  Kind kind;
  std::string_view name;
  std::size_t begin;
  std::size_t end;
};

class Tags {
 public:
  explicit Tags(std::string_view bytes) : bytes_(bytes) {}

  // The next tag, past text, comments and instructions; none at the end, or at what is not understood.
  std::optional<Tag> next() {
    for (;;) {
      const std::size_t begin = bytes_.find('<', at_);
      if (begin == std::string_view::npos) return std::nullopt;
      const std::string_view rest = bytes_.substr(begin);
      const std::string_view end = rest.starts_with("<!--")        ? "-->"
                                   : rest.starts_with("<![CDATA[") ? "]]>"
                                   : rest.starts_with("<?")        ? "?>"
                                                                   : ">";
      const std::size_t found = rest.find(end);
      if (found == std::string_view::npos) return std::nullopt;
      at_ = begin + found + end.size();
      if (rest.starts_with("<!") || rest.starts_with("<?")) continue;
      std::string_view name = rest.substr(1, found - 1);
      Tag tag{Tag::Kind::Opening, {}, begin, at_};
      if (name.ends_with('/')) tag.kind = Tag::Kind::Empty;
      if (name.starts_with('/')) {
        tag.kind = Tag::Kind::Closing;
        name.remove_prefix(1);
      }
      tag.name = name.substr(0, name.find_first_of(" \t\r\n/"));
      return tag;
    }
  }

  // From an opening tag to the end of its element; none where there is none.
  std::optional<Tag> closing() {
    for (int depth = 1;;) {
      const auto tag = next();
      if (!tag) return std::nullopt;
      if (tag->kind == Tag::Kind::Opening) ++depth;
      if (tag->kind == Tag::Kind::Closing && --depth == 0) return tag;
    }
  }

 private:
  std::string_view bytes_;
  std::size_t at_ = 0;
};

std::string textOfKey(std::string_view content) {
  if (content.find_first_of("&<\r") == std::string_view::npos) return std::string(content);
  const PropertyList key = parseXmlPropertyList("<plist><string>" + std::string(content) + "</string></plist>");
  return *key.asString();
}

class Search {
 public:
  Search(std::string_view bytes, const KeyPath& path) : bytes_(bytes), path_(path), tags_(bytes) {}

  std::optional<XmlPlace> run() {
    const auto plist = tags_.next();
    auto value = plist ? tags_.next() : std::nullopt;
    if (!value) return std::nullopt;
    return within(*value, 0);
  }

 private:
  // `value` is the tag that the value at so many steps of the path begins with.
  std::optional<XmlPlace> within(const Tag& value, std::size_t step) {
    if (step == path_.size()) {
      const auto end = value.kind == Tag::Kind::Empty ? value : tags_.closing();
      if (!end) return std::nullopt;
      return XmlPlace{value.begin, end->end, false};
    }
    if (value.kind == Tag::Kind::Empty) return std::nullopt;
    return value.name == "dict" ? inDictionary(step) : inArray(step);
  }

  std::optional<XmlPlace> inDictionary(std::size_t step) {
    const auto* wanted = std::get_if<std::string>(&path_[step]);
    std::size_t last = 0;
    while (const auto key = tags_.next()) {
      if (key->kind == Tag::Kind::Closing) return placeBehind(last, step);
      const auto end = key->kind == Tag::Kind::Empty ? key : tags_.closing();
      const auto value = end ? tags_.next() : std::nullopt;
      if (!wanted || !value) return std::nullopt;
      const std::size_t length = key->kind == Tag::Kind::Empty ? 0 : end->begin - key->end;
      if (textOfKey(bytes_.substr(key->end, length)) == *wanted) return within(*value, step + 1);
      const auto behind = value->kind == Tag::Kind::Empty ? value : tags_.closing();
      if (!behind) return std::nullopt;
      last = behind->end;
    }
    return std::nullopt;
  }

  std::optional<XmlPlace> inArray(std::size_t step) {
    const auto* wanted = std::get_if<std::size_t>(&path_[step]);
    std::size_t last = 0;
    for (std::size_t index = 0; const auto value = tags_.next(); ++index) {
      if (value->kind == Tag::Kind::Closing) return placeBehind(last, step);
      if (wanted && index == *wanted) return within(*value, step + 1);
      const auto behind = value->kind == Tag::Kind::Empty ? value : tags_.closing();
      if (!behind) return std::nullopt;
      last = behind->end;
    }
    return std::nullopt;
  }

  // Behind the last value of what must be the innermost dictionary or array; there is one.
  std::optional<XmlPlace> placeBehind(std::size_t last, std::size_t step) const {
    if (last == 0 || step + 1 != path_.size()) return std::nullopt;
    return XmlPlace{last, last, true};
  }

  std::string_view bytes_;
  const KeyPath& path_;
  Tags tags_;
};

}  // namespace

std::optional<XmlPlace> placeInXml(std::string_view bytes, const KeyPath& path) {
  return Search(bytes, path).run();
}

}  // namespace vantory
