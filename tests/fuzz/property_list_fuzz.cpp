// Feeds arbitrary bytes to the property list reader; what it accepts must survive both writers.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>

#include "base/PropertyListBytes.h"

namespace {

void require(bool condition) {
  if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace vantory;
  const auto value = parsePropertyList({reinterpret_cast<const char*>(bytes), size});
  if (!value) return 0;
  const auto rewritten = parsePropertyList(writeXmlPropertyList(*value));
  require(rewritten.has_value());
  // The first writing may turn text into data and drop fractions of seconds; after it nothing changes any more.
  const std::string xml = writeXmlPropertyList(*rewritten);
  require(writeXmlPropertyList(*parsePropertyList(xml)) == xml);
  if (value->asDictionary() || value->asArray()) {
    const auto reread = parsePropertyList(writeTextPropertyList(*value));
    require(reread.has_value());
    const std::string text = writeTextPropertyList(*reread);
    require(writeTextPropertyList(*parsePropertyList(text)) == text);
  }
  return 0;
}
