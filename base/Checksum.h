// The checksum that tells whether bytes are still what they were: XXH3 of 128 bits, by the xxHash library.
#pragma once

#include <memory>
#include <string>
#include <string_view>

struct XXH3_state_s;

namespace vantory {

// Finds damage, not forgery.
class Checksum {
 public:
  Checksum();
  ~Checksum();
  Checksum(const Checksum&) = delete;
  Checksum& operator=(const Checksum&) = delete;

  void add(std::string_view bytes);
  // As new: nothing was added.
  void restart();
  // Of all that was added: 32 hexadecimal digits, as "xxh128sum" prints them.
  std::string text() const;

 private:
  struct Deleter {
    void operator()(XXH3_state_s* state) const;
  };
  std::unique_ptr<XXH3_state_s, Deleter> state_;
};

}  // namespace vantory
