// Property lists: the values that settings, backups and job descriptions are made of.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "base/Timestamp.h"

namespace vantory {

class PropertyList;

// The bytes of a <data> value, told apart from text.
struct PropertyListData {
  std::string bytes;

  bool operator==(const PropertyListData&) const = default;
};

using PropertyListArray = std::vector<PropertyList>;

// Keys and values in the order they were read or added. Each key occurs once.
class PropertyListDictionary {
 public:
  using Entry = std::pair<std::string, PropertyList>;

  PropertyListDictionary() = default;
  // Where a key occurs more than once, its last entry counts. Cheap also for a million entries.
  explicit PropertyListDictionary(std::vector<Entry> entries);

  // The value under `key`; null when there is none. Valid until the dictionary changes.
  const PropertyList* find(std::string_view key) const;
  // Replaces the value in place, or adds it at the end.
  void set(std::string_view key, PropertyList value);
  // Adds an entry whose key is known to be new.
  void append(std::string key, PropertyList value);
  void remove(std::string_view key);

  const std::vector<Entry>& entries() const { return entries_; }
  bool empty() const;
  // Whether what was read had a key more than once.
  bool repeatsKeys() const { return repeatsKeys_; }
  bool operator==(const PropertyListDictionary& other) const;

 private:
  std::vector<Entry> entries_;
  bool repeatsKeys_ = false;
};

// One value. The as…() functions answer null or none when it is of another type; nothing is converted.
class PropertyList {
 public:
  // Signed values, and unsigned ones above the signed range, keep their value through every format.
  using Content = std::variant<bool, std::int64_t, std::uint64_t, double, std::string, PropertyListData, Timestamp,
                               PropertyListArray, PropertyListDictionary>;

  PropertyList() : content_(std::string()) {}
  template <class T>
  requires(!std::is_same_v<T, PropertyList> && std::is_constructible_v<Content, T>) PropertyList(T value)
      : content_(std::move(value)) {}
  PropertyList(const char* text) : content_(std::string(text)) {}
  PropertyList(int value) : content_(std::int64_t{value}) {}

  const Content& content() const { return content_; }
  const std::string* asString() const { return std::get_if<std::string>(&content_); }
  const PropertyListData* asData() const { return std::get_if<PropertyListData>(&content_); }
  const PropertyListArray* asArray() const { return std::get_if<PropertyListArray>(&content_); }
  const PropertyListDictionary* asDictionary() const { return std::get_if<PropertyListDictionary>(&content_); }
  const Timestamp* asDate() const { return std::get_if<Timestamp>(&content_); }
  const bool* asBoolean() const { return std::get_if<bool>(&content_); }

  bool operator==(const PropertyList&) const = default;

 private:
  Content content_;
};

// The text of a string, or of data that stands for text that XML cannot hold; none for every other value.
std::optional<std::string> textOf(const PropertyList& value);
// The reverse: a string, or data where the text is no UTF-8.
PropertyList textValue(std::string_view text);

}  // namespace vantory
