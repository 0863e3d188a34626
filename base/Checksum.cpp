// Hands bytes to the xxHash library, and writes its result in hexadecimal digits.
#include "base/Checksum.h"

#include <xxhash.h>

#include <new>

#include "base/ChecksumAvx2.h"

namespace vantory {

namespace {

// The library as it is packaged uses what every processor of its kind has.
void addBytes(XXH3_state_t* state, std::string_view bytes) {
#ifdef VANTORY_AVX2
  static const bool hasAvx2 = __builtin_cpu_supports("avx2");
  if (hasAvx2) return addByAvx2(state, bytes.data(), bytes.size());
#endif
  XXH3_128bits_update(state, bytes.data(), bytes.size());
}

}  // namespace

Checksum::Checksum() : state_(XXH3_createState()) {
  if (!state_) throw std::bad_alloc();
  restart();
}

Checksum::~Checksum() = default;

void Checksum::Deleter::operator()(XXH3_state_s* state) const {
  XXH3_freeState(state);
}

void Checksum::add(std::string_view bytes) {
  addBytes(state_.get(), bytes);
}

void Checksum::restart() {
  XXH3_128bits_reset(state_.get());
}

std::string Checksum::text() const {
  constexpr const char* kDigits = "0123456789abcdef";
  XXH128_canonical_t canonical;
  XXH128_canonicalFromHash(&canonical, XXH3_128bits_digest(state_.get()));
  std::string text(2 * sizeof canonical.digest, '\0');
  auto digit = text.begin();
  for (const unsigned char byte : canonical.digest) {
    *digit++ = kDigits[byte >> 4];
    *digit++ = kDigits[byte & 15];
  }
  return text;
}

}  // namespace vantory
