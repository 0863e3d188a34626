// Dictionaries of property lists.
#include "base/PropertyList.h"

#include <algorithm>
#include <cstddef>

#include "base/Text.h"

namespace vantory {

namespace {

using Entry = PropertyListDictionary::Entry;

// For each entry, whether a later one has its key. Sorts instead of hashing: no choice of keys makes it slow.
std::vector<bool> supersededEntries(const std::vector<Entry>& entries) {
  std::vector<const Entry*> byKey(entries.size());
  for (std::size_t i = 0; i < entries.size(); ++i) byKey[i] = &entries[i];
  std::stable_sort(byKey.begin(), byKey.end(),
                   [](const Entry* left, const Entry* right) { return left->first < right->first; });
  std::vector<bool> superseded(entries.size());
  // Equal keys stand in the order of the file, so that each but the last has its successor beside it.
  for (std::size_t i = 1; i < byKey.size(); ++i) {
    if (byKey[i - 1]->first == byKey[i]->first) superseded[byKey[i - 1] - entries.data()] = true;
  }
  return superseded;
}

}  // namespace

PropertyListDictionary::PropertyListDictionary(std::vector<Entry> entries) : entries_(std::move(entries)) {
  const std::vector<bool> superseded = supersededEntries(entries_);
  if (std::find(superseded.begin(), superseded.end(), true) == superseded.end()) return;
  repeatsKeys_ = true;
  std::vector<Entry> kept;
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    if (!superseded[i]) kept.push_back(std::move(entries_[i]));
  }
  entries_ = std::move(kept);
}

const PropertyList* PropertyListDictionary::find(std::string_view key) const {
  for (const Entry& entry : entries_) {
    if (entry.first == key) return &entry.second;
  }
  return nullptr;
}

void PropertyListDictionary::set(std::string_view key, PropertyList value) {
  for (Entry& entry : entries_) {
    if (entry.first != key) continue;
    entry.second = std::move(value);
    return;
  }
  append(std::string(key), std::move(value));
}

void PropertyListDictionary::append(std::string key, PropertyList value) {
  entries_.emplace_back(std::move(key), std::move(value));
}

void PropertyListDictionary::remove(std::string_view key) {
  std::erase_if(entries_, [key](const Entry& entry) { return entry.first == key; });
}

bool PropertyListDictionary::empty() const {
  return entries_.empty();
}

bool PropertyListDictionary::operator==(const PropertyListDictionary& other) const {
  return entries_ == other.entries_;
}

std::optional<std::string> textOf(const PropertyList& value) {
  if (const std::string* text = value.asString()) return *text;
  const PropertyListData* data = value.asData();
  if (data && !xmlCanHold(data->bytes)) return data->bytes;
  return std::nullopt;
}

PropertyList textValue(std::string_view text) {
  if (isUtf8(text)) return std::string(text);
  return PropertyListData{std::string(text)};
}

}  // namespace vantory
