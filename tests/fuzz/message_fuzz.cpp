// Sends arbitrary bytes to one end of a conversation with a helper program: no message, or one that travels unchanged.
#include <sys/socket.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "platform/linux/helpers/Channel.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace vantory;
  using namespace std::chrono_literals;
  auto ends = Channel::pair();
  if (!ends || send(ends->other.descriptor(), bytes, size, MSG_EOR) != static_cast<ssize_t>(size)) return 0;
  const auto message = ends->own.receive(0ms);
  if (!message) return 0;
  if (!ends->own.send(*message)) std::abort();
  const auto back = ends->other.receive(0ms);
  if (!back || *back != *message) std::abort();
  return 0;
}
