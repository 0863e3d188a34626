// Open files that close themselves, and calls that signals do not cut short.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace vantory {

// Owns a file descriptor; a negative number stands for none.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(other.release()) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    if (this == &other) return *this;
    if (valid()) close(number_);
    number_ = other.release();
    return *this;
  }
  ~Descriptor() {
    if (valid()) close(number_);
  }

  bool valid() const { return number_ >= 0; }
  int get() const { return number_; }
  // Gives the descriptor to the caller to close.
  int release() { return std::exchange(number_, -1); }

 private:
  int number_ = -1;
};

// Repeats a system call until no signal interrupts it.
template <class Call>
auto uninterrupted(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

}  // namespace vantory
