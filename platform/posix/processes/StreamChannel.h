// Messages where sockets keep no borders between them.
#pragma once

#include <chrono>
#include <optional>

#include "base/Result.h"
#include "platform/posix/files/Descriptor.h"
#include "platform/posix/processes/Message.h"

namespace vantory {

// One end of a conversation on a stream; each message goes behind its length. For processes that
// ignore the signal of a failed write. One thread at a time.
class StreamChannel {
 public:
  // A stream that goes both ways.
  explicit StreamChannel(Descriptor stream) : stream_(std::move(stream)) {}

  struct Ends;
  // Both ends of a new conversation; neither is handed down to a program that is started.
  static Result<Ends> pair();

  // Together with an open file, where there is one: then the stream must be a socket. Fails when the other end is gone
  // (not_connected), and when the message cannot travel (invalid_argument, message_size).
  Status send(const Message& message, int file = -1);
  // Blocks for a message, without a limit when none is given. An open file that comes along goes to `file`, and is
  // closed where nobody wants one. Fails at the end of the conversation (not_connected), when the time is over
  // (timed_out), and with what is no message (bad_message, message_size).
  Result<Message> receive(std::optional<std::chrono::milliseconds> limit = std::nullopt, Descriptor* file = nullptr);
  // Whether the other end is still there. Any thread.
  bool isOpen() const;
  void close() { stream_ = Descriptor(); }
  int descriptor() const { return stream_.get(); }

 private:
  Status readAll(char* bytes, std::size_t size, std::optional<std::chrono::steady_clock::time_point> end,
                 Descriptor* file);

  Descriptor stream_;
};

struct StreamChannel::Ends {
  StreamChannel own;
  StreamChannel other;
};

}  // namespace vantory
