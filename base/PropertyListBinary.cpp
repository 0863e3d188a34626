// Reads the binary form: objects that refer to each other by number, a table of their offsets, and a trailer that says
// where everything is. Nothing it says is believed before it is checked.
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

#include "base/PropertyListFormats.h"
#include "base/Text.h"

namespace vantory {

namespace {

constexpr std::string_view kHeader = "bplist00";
constexpr std::size_t kTrailerSize = 32;
constexpr double kSecondsFrom1970To2001 = 978307200;

[[noreturn]] void damaged() {
  throw DamagedPropertyList();
}

// One reading of one file. An object is read again each time that another refers to it.
class BinaryReader {
 public:
  // Of the trailer the first six bytes say nothing that is needed.
  explicit BinaryReader(std::string_view bytes) : bytes_(bytes) {
    if (!bytes.starts_with(kHeader) || bytes.size() < kHeader.size() + kTrailerSize) damaged();
    const std::size_t trailer = bytes.size() - kTrailerSize;
    offsetSize_ = number(trailer + 6, 1);
    referenceSize_ = number(trailer + 7, 1);
    objectCount_ = number(trailer + 8, 8);
    topObject_ = number(trailer + 16, 8);
    tableOffset_ = number(trailer + 24, 8);
    if (offsetSize_ < 1 || offsetSize_ > 8 || referenceSize_ < 1 || referenceSize_ > 8) damaged();
    if (tableOffset_ < kHeader.size() || tableOffset_ > trailer) damaged();
    if (objectCount_ > (trailer - tableOffset_) / offsetSize_) damaged();
    objects_ = bytes.substr(0, tableOffset_);
  }

  PropertyList read() { return value(topObject_, 0); }

 private:
  // An object's type, its count (of bytes, characters or values), and where its content begins.
  struct Object {
    unsigned type;
    std::uint64_t count;
    std::size_t content;
  };

  // Big-endian; the bytes are known to exist.
  std::uint64_t number(std::size_t at, std::size_t size) const {
    std::uint64_t result = 0;
    for (const unsigned char byte : bytes_.substr(at, size)) result = result << 8 | byte;
    return result;
  }

  // The content of an object; refused where the objects end before it does.
  std::string_view content(std::size_t at, std::uint64_t count, std::size_t unitSize = 1) const {
    if (at > objects_.size() || count > (objects_.size() - at) / unitSize) damaged();
    return objects_.substr(at, count * unitSize);
  }

  std::uint64_t checkedNumber(std::size_t at, std::size_t size) const {
    content(at, size);
    return number(at, size);
  }

  // A marker's lower half is the count; fifteen says that the count follows as an integer of its own. Numbers and dates
  // have none.
  Object object(std::uint64_t reference) const {
    if (reference >= objectCount_) damaged();
    const std::uint64_t offset = number(tableOffset_ + reference * offsetSize_, offsetSize_);
    if (offset < kHeader.size() || offset >= objects_.size()) damaged();
    const unsigned marker = static_cast<unsigned char>(objects_[offset]);
    Object result{marker >> 4, marker & 0xf, offset + 1};
    if (result.count != 0xf || result.type < 4) return result;
    const std::uint64_t countMarker = checkedNumber(offset + 1, 1);
    if (countMarker < 0x10 || countMarker > 0x13) damaged();
    const std::size_t countSize = std::size_t{1} << (countMarker & 0xf);
    result.count = checkedNumber(offset + 2, countSize);
    result.content = offset + 2 + countSize;
    return result;
  }

  // Objects may be referred to many times, and each time they are copied: the whole must stay in proportion to the
  // file.
  void spend(std::size_t memory) {
    if (memory > budget_) damaged();
    budget_ -= memory;
  }

  // `depth` is the number of arrays and dictionaries around the value.
  PropertyList value(std::uint64_t reference, int depth) {
    const Object object = this->object(reference);
    switch (object.type) {
      case 0x0:
        return boolean(object);
      case 0x1:
        return integer(object);
      case 0x2:
        return real(object);
      case 0x3:
        return date(object);
      case 0x4:
        return data(object);
      case 0x5:
      case 0x6:
        return text(object);
      case 0xa:
        return array(object, depth + 1);
      case 0xd:
        return dictionary(object, depth + 1);
      default:
        damaged();
    }
  }

  // 8 is false, 9 is true; the others of this type, such as null, stand for no value here.
  PropertyList boolean(const Object& object) const {
    if (object.count != 8 && object.count != 9) damaged();
    return object.count == 9;
  }

  // The count of a number is the logarithm of its size. Only eight bytes hold a sign; sixteen are used for unsigned
  // values that need all of the lower eight.
  PropertyList integer(const Object& object) const {
    if (object.count > 4) damaged();
    if (object.count == 4) {
      if (checkedNumber(object.content, 8) != 0) damaged();
      const std::uint64_t low = checkedNumber(object.content + 8, 8);
      if (low > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) return low;
      return static_cast<std::int64_t>(low);
    }
    return static_cast<std::int64_t>(checkedNumber(object.content, std::size_t{1} << object.count));
  }

  double realNumber(const Object& object) const {
    if (object.count == 2) return std::bit_cast<float>(static_cast<std::uint32_t>(checkedNumber(object.content, 4)));
    if (object.count == 3) return std::bit_cast<double>(checkedNumber(object.content, 8));
    damaged();
  }

  PropertyList real(const Object& object) const { return realNumber(object); }

  // Seconds since 2001, as a real number.
  PropertyList date(const Object& object) const {
    const double since1970 = realNumber(object) + kSecondsFrom1970To2001;
    if (!isPropertyListDate(since1970)) damaged();
    const double whole = std::floor(since1970);
    return Timestamp{static_cast<std::int64_t>(whole), static_cast<std::int32_t>((since1970 - whole) * 1e9)};
  }

  PropertyList data(const Object& object) {
    const std::string_view bytes = content(object.content, object.count);
    spend(bytes.size());
    return PropertyListData{std::string(bytes)};
  }

  // ASCII, or UTF-16 with the higher byte first. UTF-8 where ASCII should be is what some writers leave.
  std::string text(const Object& object) {
    if (object.type == 0x6) {
      const std::string_view units = content(object.content, object.count, 2);
      // A unit takes three bytes at most.
      spend(units.size() / 2 * 3);
      return utf8FromUtf16(units, ByteOrder::BigEndian);
    }
    const std::string_view characters = content(object.content, object.count);
    spend(characters.size());
    if (object.type != 0x5 || !isUtf8(characters)) damaged();
    return std::string(characters);
  }

  // The number of the object that the container has at this index; the bytes are known to exist.
  std::uint64_t reference(const Object& container, std::uint64_t index) const {
    return number(container.content + index * referenceSize_, referenceSize_);
  }

  // The memory is paid for before it is taken.
  PropertyList array(const Object& object, int depth) {
    if (depth > kMaximumPropertyListDepth) damaged();
    content(object.content, object.count, referenceSize_);
    spend(object.count * sizeof(PropertyList));
    PropertyListArray values;
    values.reserve(object.count);
    for (std::uint64_t i = 0; i < object.count; ++i) values.push_back(value(reference(object, i), depth));
    return values;
  }

  // All keys come before all values.
  PropertyList dictionary(const Object& object, int depth) {
    if (depth > kMaximumPropertyListDepth) damaged();
    content(object.content, object.count, 2 * referenceSize_);
    spend(object.count * sizeof(PropertyListDictionary::Entry));
    std::vector<PropertyListDictionary::Entry> entries;
    entries.reserve(object.count);
    for (std::uint64_t i = 0; i < object.count; ++i) {
      std::string key = text(this->object(reference(object, i)));
      entries.emplace_back(std::move(key), value(reference(object, object.count + i), depth));
    }
    return PropertyListDictionary(std::move(entries));
  }

  std::string_view bytes_;
  // The part of the bytes that holds objects.
  std::string_view objects_;
  std::size_t offsetSize_;
  std::size_t referenceSize_;
  std::uint64_t objectCount_;
  std::uint64_t topObject_;
  std::size_t tableOffset_;
  // Enough for every file that refers to each array and dictionary once, and for much repetition of small values.
  std::size_t budget_ = (std::size_t{1} << 20) + 64 * bytes_.size();
};

}  // namespace

PropertyList parseBinaryPropertyList(std::string_view bytes) {
  return BinaryReader(bytes).read();
}

}  // namespace vantory
