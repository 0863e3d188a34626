// Calls to other programs on the user's session bus.
#pragma once

#include <chrono>
#include <string>

#include "base/Result.h"
#include "platform/linux/session/GLibPointers.h"

namespace vantory::desktop {

// A moment until which several steps may take, together.
class Deadline {
 public:
  explicit Deadline(std::chrono::milliseconds limit) : end_(std::chrono::steady_clock::now() + limit) {}
  // Milliseconds, at least one.
  int remaining() const;

 private:
  std::chrono::steady_clock::time_point end_;
};

struct BusCall {
  std::string service;
  std::string path;
  std::string interface;
  std::string member;
  VariantPointer arguments = {};  // a tuple; none for a member without arguments
  const char* reply = nullptr;    // the type that the reply must have, such as "(u)"; any when null
  bool startService = true;       // whether the bus may start a program that offers the service
  bool insist = false;            // whether to wait also for a service that has just failed to answer in time
};

// The connection is made on first use and kept. The program ends with the bus. A bus that cannot be reached offers no
// service (no_such_device_or_address). One that takes the connection and hangs (timed_out) is waited for once, for a
// second, and is of use again as soon as it goes on.
Result<GDBusConnection*> sessionBus();

// Blocks until the reply or the deadline. Errors that callers tell apart: nobody offers the service
// (no_such_device_or_address), it does not know the member (function_not_supported), no reply in time (timed_out), it
// ended instead of replying (connection_reset). A
// service that did not reply in time is not asked for half a minute, so that many calls in a row hold nobody up.
Result<VariantPointer> callBus(const BusCall& call, const Deadline& deadline);

// A bus carries text that is UTF-8 only; bytes that are none become replacement characters.
TextPointer busText(const std::string& text);

}  // namespace vantory::desktop
