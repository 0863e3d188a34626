// Writes the binary form: the objects one after the other, a table of their offsets, and a trailer.
#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>
#include <map>

#include "base/PropertyListBytes.h"
#include "base/Text.h"

namespace vantory {

namespace {

constexpr double kSecondsFrom1970To2001 = 978307200;

std::string bigEndian(std::uint64_t number, std::size_t size) {
  std::string bytes(size, '\0');
  for (std::size_t i = size; i-- > 0; number >>= 8) bytes[i] = static_cast<char>(number);
  return bytes;
}

// The bytes that a number takes: 1, 2, 4 or 8.
std::size_t sizeOf(std::uint64_t number) {
  if (number <= 0xff) return 1;
  if (number <= 0xffff) return 2;
  return number <= 0xffffffff ? 4 : 8;
}

std::string integer(std::uint64_t number, std::size_t size) {
  return static_cast<char>(0x10 | std::countr_zero(size)) + bigEndian(number, size);
}

// The type, and how many bytes, characters or values follow.
std::string marker(unsigned type, std::size_t count) {
  if (count < 0xf) return std::string(1, static_cast<char>(type << 4 | count));
  return static_cast<char>(type << 4 | 0xf) + integer(count, sizeOf(count));
}

// Of a whole character of UTF-8.
std::uint32_t codePoint(std::string_view character) {
  constexpr unsigned char kFirstBits[] = {0x7f, 0x1f, 0x0f, 0x07};
  std::uint32_t point = static_cast<unsigned char>(character.front()) & kFirstBits[character.size() - 1];
  for (const char byte : character.substr(1)) point = point << 6 | (static_cast<unsigned char>(byte) & 0x3f);
  return point;
}

std::string utf16(std::string_view text) {
  std::string units;
  for (; !text.empty(); text.remove_prefix(utf8CharacterLength(text))) {
    const std::uint32_t point = codePoint(text.substr(0, utf8CharacterLength(text)));
    if (point >= 0x10000) units += bigEndian(0xd800 + ((point - 0x10000) >> 10), 2);
    units += bigEndian(point < 0x10000 ? point : 0xdc00 + ((point - 0x10000) & 0x3ff), 2);
  }
  return units;
}

std::string text(const std::string& value) {
  if (!isUtf8(value)) return marker(0x4, value.size()) + value;
  const auto isAscii = [](char character) { return static_cast<unsigned char>(character) < 0x80; };
  if (std::all_of(value.begin(), value.end(), isAscii)) return marker(0x5, value.size()) + value;
  const std::string units = utf16(value);
  return marker(0x6, units.size() / 2) + units;
}

// What refers to no other object.
struct PlainObject {
  std::string operator()(bool value) const { return std::string(1, value ? '\x09' : '\x08'); }
  std::string operator()(std::int64_t value) const {
    const auto number = static_cast<std::uint64_t>(value);
    return integer(number, value < 0 ? 8 : sizeOf(number));
  }
  std::string operator()(std::uint64_t value) const {
    if (value <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
      return integer(value, sizeOf(value));
    return "\x14" + std::string(8, '\0') + bigEndian(value, 8);
  }
  std::string operator()(double value) const { return "\x23" + bigEndian(std::bit_cast<std::uint64_t>(value), 8); }
  std::string operator()(const Timestamp& value) const {
    const double seconds =
        static_cast<double>(value.seconds) - kSecondsFrom1970To2001 + static_cast<double>(value.nanoseconds) / 1e9;
    return "\x33" + bigEndian(std::bit_cast<std::uint64_t>(seconds), 8);
  }
  std::string operator()(const std::string& value) const { return text(value); }
  std::string operator()(const PropertyListData& value) const { return marker(0x4, value.bytes.size()) + value.bytes; }
  std::string operator()(const PropertyListArray& value) const { return marker(0xa, value.size()); }
  std::string operator()(const PropertyListDictionary& value) const { return marker(0xd, value.entries().size()); }
};

class BinaryWriter {
 public:
  std::string document(const PropertyList& value) {
    add(value);
    const std::size_t referenceSize = sizeOf(objects_.size());
    std::string bytes = "bplist00";
    std::vector<std::size_t> offsets;
    for (const Object& object : objects_) {
      offsets.push_back(bytes.size());
      bytes += object.bytes;
      for (const std::size_t reference : object.references) bytes += bigEndian(reference, referenceSize);
    }
    const std::size_t table = bytes.size();
    const std::size_t offsetSize = sizeOf(table);
    for (const std::size_t offset : offsets) bytes += bigEndian(offset, offsetSize);
    return bytes + std::string(6, '\0') + bigEndian(offsetSize, 1) + bigEndian(referenceSize, 1) +
           bigEndian(objects_.size(), 8) + bigEndian(0, 8) + bigEndian(table, 8);
  }

 private:
  struct Object {
    std::string bytes;
    std::vector<std::size_t> references = {};
  };

  std::size_t add(std::string bytes) {
    objects_.push_back({std::move(bytes)});
    return objects_.size() - 1;
  }

  // Equal texts are one object.
  std::size_t addText(const std::string& value) {
    const auto [known, isNew] = texts_.try_emplace(value, objects_.size());
    if (isNew) add(text(value));
    return known->second;
  }

  std::size_t add(const PropertyList& value) {
    if (const std::string* text = value.asString()) return addText(*text);
    const std::size_t number = add(std::visit(PlainObject(), value.content()));
    std::vector<std::size_t> references;
    if (const PropertyListArray* array = value.asArray())
      for (const PropertyList& each : *array) references.push_back(add(each));
    if (const PropertyListDictionary* dictionary = value.asDictionary()) {
      for (const auto& entry : dictionary->entries()) references.push_back(addText(entry.first));
      for (const auto& entry : dictionary->entries()) references.push_back(add(entry.second));
    }
    objects_[number].references = std::move(references);
    return number;
  }

  std::vector<Object> objects_;
  std::map<std::string, std::size_t> texts_;
};

}  // namespace

std::string writeBinaryPropertyList(const PropertyList& value) {
  return BinaryWriter().document(value);
}

}  // namespace vantory
