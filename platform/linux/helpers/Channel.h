// Messages between the program and its helper programs.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>

#include "base/Result.h"
#include "platform/posix/files/Descriptor.h"
#include "platform/posix/processes/Message.h"

namespace vantory {

// One end of a conversation. Each message arrives whole or not at all, in order. Any thread may send; one at a time may
// receive.
class Channel {
 public:
  // A connected socket of the kind that pair() makes.
  explicit Channel(Descriptor socket) : socket_(std::move(socket)) {}

  struct Ends;
  // Both ends of a new conversation; neither is handed down to a program that is started unless asked for.
  static Result<Ends> pair();

  // From now on that process alone is heard: a message of another one, to whom the other end was handed on, and the end
  // of the process end the conversation. Called before anything has been received.
  Status hearOnly(pid_t process);

  // Fails when the other end is gone (not_connected) or has not read for ten seconds (timed_out), and when the message
  // cannot travel (invalid_argument, message_size).
  Status send(const Message& message);
  // Blocks for a message, without a limit when none is given. Fails at the end of the conversation (not_connected),
  // when the time is over (timed_out), and with what is no message (bad_message).
  Result<Message> receive(std::optional<std::chrono::milliseconds> limit = std::nullopt);
  // Whether the other end, or the process that alone is heard, is still there. Any thread.
  bool isOpen() const;
  // Ends the conversation for both ends, also for a thread that waits in receive() meanwhile. Any thread.
  void end();

  int descriptor() const { return socket_.get(); }

 private:
  Descriptor socket_;
  pid_t partner_ = 0;
  Descriptor partnerProcess_;  // readable once it has ended; none where whoever holds the other end is heard
};

struct Channel::Ends {
  Channel own;
  Channel other;
};

}  // namespace vantory
