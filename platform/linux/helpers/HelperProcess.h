// A helper program of ours that runs beside this one and is talked to.
#pragma once

#include <sys/types.h>

#include <string>

#include "base/Result.h"
#include "platform/linux/helpers/Channel.h"
#include "platform/posix/processes/ChildProgram.h"

namespace vantory {

// The helper's end of the conversation is its standard input; it ends when the conversation does.
class HelperProcess {
 public:
  // The program's input is set here.
  static Result<HelperProcess> start(ChildProgram program);
  // Ends the conversation and waits, at most two seconds, for the helper to end; a helper that does not is killed where
  // this process may do so.
  ~HelperProcess();
  HelperProcess(HelperProcess&& other) noexcept;
  HelperProcess& operator=(HelperProcess&&) = delete;

  Channel& channel() { return channel_; }

 private:
  HelperProcess(pid_t child, Channel channel) : child_(child), channel_(std::move(channel)) {}

  pid_t child_;  // -1 when moved from
  Channel channel_;
};

}  // namespace vantory
