// Compares property lists, and puts values into short lines.
#include "base/PropertyListChanges.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <string_view>

#include "base/Format.h"
#include "base/PropertyListFormats.h"
#include "base/Text.h"

namespace vantory {

namespace {

constexpr std::size_t kLongestText = 60;  // bytes

class Comparing {
 public:
  void compare(const PropertyList& before, const PropertyList& after) {
    if (before.asDictionary() && after.asDictionary())
      compare(*before.asDictionary(), *after.asDictionary());
    else if (before.asArray() && after.asArray())
      compare(*before.asArray(), *after.asArray());
    else if (before != after)
      add(before, after);
  }

  std::vector<KeyChange> changes;

 private:
  using Keys = std::map<std::string_view, const PropertyList*>;

  using Value = std::optional<PropertyList>;

  void add(Value before, Value after) { changes.push_back({path_, std::move(before), std::move(after)}); }

  template <class Step, class Work>
  void within(const Step& step, Work work) {
    path_.emplace_back(step);
    work();
    path_.pop_back();
  }

  static Keys keysOf(const PropertyListDictionary& dictionary) {
    Keys keys;
    for (const auto& [key, value] : dictionary.entries()) keys.emplace(key, &value);
    return keys;
  }

  void compare(const PropertyListDictionary& before, const PropertyListDictionary& after) {
    const Keys old = keysOf(before);
    const Keys young = keysOf(after);
    for (const auto& [key, value] : before.entries())
      within(key, [&, &value = value, &key = key] {
        const auto other = young.find(key);
        if (other == young.end())
          add(value, std::nullopt);
        else
          compare(value, *other->second);
      });
    for (const auto& [key, value] : after.entries())
      if (!old.contains(key)) within(key, [&, &value = value] { add(std::nullopt, value); });
  }

  void compare(const PropertyListArray& before, const PropertyListArray& after) {
    for (std::size_t i = 0; i < std::max(before.size(), after.size()); ++i)
      within(i, [&] {
        if (i >= after.size())
          add(before[i], std::nullopt);
        else if (i >= before.size())
          add(std::nullopt, after[i]);
        else
          compare(before[i], after[i]);
      });
  }

  KeyPath path_;
};

std::string textInShort(const std::string& text) {
  const std::string_view cut = shortened(text, kLongestText);
  return "\"" + printable(cut) + (cut.size() < text.size() ? "…\"" : "\"");
}

struct ShortLine {
  std::string operator()(bool value) const { return value ? "1" : "0"; }
  std::string operator()(std::int64_t value) const { return std::to_string(value); }
  std::string operator()(std::uint64_t value) const { return std::to_string(value); }
  std::string operator()(double value) const { return propertyListReal(value); }
  std::string operator()(const std::string& value) const { return textInShort(value); }
  std::string operator()(const PropertyListData& value) const {
    return counted(value.bytes.size(), "byte") + " of data";
  }
  std::string operator()(const Timestamp& value) const { return localTimeText(value, "%Y-%m-%d %H:%M:%S"); }
  std::string operator()(const PropertyListArray& value) const { return counted(value.size(), "value"); }
  std::string operator()(const PropertyListDictionary& value) const { return counted(value.entries().size(), "key"); }
};

const char* typeOf(const PropertyList& value) {
  constexpr const char* kNames[] = {"yes or no", "whole number", "whole number", "number",    "text",
                                    "data",      "date",         "array",        "dictionary"};
  return kNames[value.content().index()];
}

}  // namespace

std::vector<KeyChange> changesBetween(const PropertyList& before, const PropertyList& after) {
  Comparing comparing;
  comparing.compare(before, after);
  return std::move(comparing.changes);
}

std::string valueInShort(const PropertyList& value) {
  return std::visit(ShortLine(), value.content());
}

std::pair<std::string, std::string> valuesInShort(const KeyChange& change) {
  const std::string before = valueInShort(*change.before);
  const std::string after = valueInShort(*change.after);
  if (before != after) return {before, after};
  const std::string_view types[] = {typeOf(*change.before), typeOf(*change.after)};
  if (types[0] != types[1]) return {formatted("%@ (%@)", before, types[0]), formatted("%@ (%@)", after, types[1])};
  return {before, after + ", not the same"};
}

std::string changeInShort(const KeyChange& change) {
  if (!change.before) return "+ " + valueInShort(*change.after);
  if (!change.after) return "- " + valueInShort(*change.before);
  const auto [before, after] = valuesInShort(change);
  return before + " → " + after;
}

}  // namespace vantory
