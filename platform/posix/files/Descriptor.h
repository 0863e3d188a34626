// Open files that close themselves, and calls that signals do not cut short.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace vantory {

// Owns a file descriptor; a negative number stands for none. Letting go of it leaves errno as it is, so that an error
// can still be told afterwards.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(other.release()) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    if (this == &other) return *this;
    letGo();
    number_ = other.release();
    return *this;
  }
  ~Descriptor() { letGo(); }

  bool valid() const { return number_ >= 0; }
  int get() const { return number_; }
  // Gives the descriptor to the caller to close.
  int release() { return std::exchange(number_, -1); }
  // Closes it now. False, with errno, where a write that seemed to succeed failed after all; network file systems tell
  // so no earlier.
  bool closeWritten() { return close(release()) == 0 || errno == EINTR; }

 private:
  void letGo() {
    if (!valid()) return;
    const int error = errno;
    close(release());
    errno = error;
  }

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
