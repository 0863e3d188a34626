// Writes, reads and follows key paths.
#include "base/KeyPath.h"

#include <charconv>

#include "base/Text.h"

namespace vantory {

namespace {

using Steps = std::span<const KeyPath::value_type>;

// A backslash stays one character until the end, where printable() writes those of its own.
void appendKey(std::string& text, std::string_view key) {
  for (const char character : key) {
    if (character == '.' || character == '[' || character == '\\') text += '\\';
    text += character;
  }
}

// Takes what follows a backslash off the front of the rest; none where that stands for nothing.
std::optional<char> takeEscape(std::string_view& rest) {
  if (rest.empty()) return std::nullopt;
  const char kind = rest.front();
  rest.remove_prefix(1);
  switch (kind) {
    case 'n':
      return '\n';
    case 'r':
      return '\r';
    case 't':
      return '\t';
    case 'x': {
      unsigned value = 0;
      const char* end = rest.data() + std::min<std::size_t>(2, rest.size());
      if (const auto read = std::from_chars(rest.data(), end, value, 16); read.ptr != rest.data() + 2)
        return std::nullopt;
      rest.remove_prefix(2);
      return static_cast<char>(value);
    }
    default:
      return kind;
  }
}

// Up to the "." or "[" behind it.
std::optional<std::string> takeKey(std::string_view& rest) {
  std::string key;
  while (!rest.empty() && rest.front() != '.' && rest.front() != '[') {
    char character = rest.front();
    rest.remove_prefix(1);
    if (character == '\\') {
      const auto escaped = takeEscape(rest);
      if (!escaped) return std::nullopt;
      character = *escaped;
    }
    key += character;
  }
  return key;
}

// Behind the "[", and the "]" with it.
std::optional<std::size_t> takeIndex(std::string_view& rest) {
  std::size_t index = 0;
  const char* end = rest.data() + rest.size();
  const auto [stop, error] = std::from_chars(rest.data(), end, index);
  if (error != std::errc() || stop == end || *stop != ']') return std::nullopt;
  rest.remove_prefix(static_cast<std::size_t>(stop - rest.data()) + 1);
  return index;
}

// Below a value that is neither dictionary nor array stands nothing.
const PropertyList* step(const PropertyList& value, const KeyPath::value_type& to) {
  if (const auto* key = std::get_if<std::string>(&to)) {
    const PropertyListDictionary* dictionary = value.asDictionary();
    return dictionary ? dictionary->find(*key) : nullptr;
  }
  const PropertyListArray* array = value.asArray();
  const std::size_t index = std::get<std::size_t>(to);
  return array && index < array->size() ? &(*array)[index] : nullptr;
}

std::optional<PropertyList> replaced(const PropertyList* whole, Steps path, const PropertyList& value) {
  if (path.empty()) return value;
  if (!whole) return std::nullopt;
  const auto inner = replaced(step(*whole, path.front()), path.subspan(1), value);
  if (!inner) return std::nullopt;
  if (const auto* key = std::get_if<std::string>(&path.front())) {
    if (!whole->asDictionary()) return std::nullopt;
    PropertyListDictionary dictionary = *whole->asDictionary();
    dictionary.set(*key, *inner);
    return dictionary;
  }
  const std::size_t index = std::get<std::size_t>(path.front());
  if (!whole->asArray() || index > whole->asArray()->size()) return std::nullopt;
  PropertyListArray array = *whole->asArray();
  if (index == array.size()) array.emplace_back();
  array[index] = *inner;
  return array;
}

}  // namespace

std::string keyPathText(const KeyPath& path) {
  std::string text;
  for (const auto& step : path) {
    if (const auto* key = std::get_if<std::string>(&step)) {
      if (&step != &path.front()) text += '.';
      appendKey(text, *key);
    } else {
      text += "[" + std::to_string(std::get<std::size_t>(step)) + "]";
    }
  }
  return printable(text);
}

std::string keyPathInWords(const KeyPath& path) {
  if (path.empty()) return "The whole property list";
  const std::string text = keyPathText(path);
  const bool needsQuotes = text.empty() || text.front() == ' ' || text.back() == ' ';
  return needsQuotes ? "\"" + text + "\"" : text;
}

std::optional<KeyPath> parseKeyPath(std::string_view text) {
  KeyPath path;
  if (!text.starts_with('[')) {
    const auto key = takeKey(text);
    if (!key) return std::nullopt;
    path.emplace_back(*key);
  }
  while (!text.empty()) {
    const char kind = text.front();
    text.remove_prefix(1);
    if (kind == '[') {
      const auto index = takeIndex(text);
      if (!index) return std::nullopt;
      path.emplace_back(*index);
    } else if (kind == '.') {
      const auto key = takeKey(text);
      if (!key) return std::nullopt;
      path.emplace_back(*key);
    } else {
      return std::nullopt;
    }
  }
  return path;
}

const PropertyList* valueAt(const PropertyList& whole, const KeyPath& path) {
  const PropertyList* value = &whole;
  for (auto next = path.begin(); value && next != path.end(); ++next) value = step(*value, *next);
  return value;
}

std::optional<PropertyList> withValueAt(const PropertyList& whole, const KeyPath& path, const PropertyList& value) {
  return replaced(&whole, path, value);
}

}  // namespace vantory
