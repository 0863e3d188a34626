// The helper program that speaks to the user's desktop.
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "base/Result.h"
#include "platform/linux/helpers/Channel.h"
#include "platform/posix/processes/ChildProgram.h"

namespace vantory {

// Starts the program when it is first asked something, and again when it has ended. Any thread.
class DesktopHelper {
 public:
  // Called on the thread that reads what the program says, so it must neither ask nor wait for one who does.
  using EventHandler = std::function<void(const Message& values)>;

  // `program` tells what to start, each time.
  explicit DesktopHelper(std::function<Result<ChildProgram>()> program);
  ~DesktopHelper();

  // Blocks for the answer: the values that belong to it, maybe none. `limit` is for this answer, requests of other
  // threads come first. Fails as the request did, or when the program cannot be started or ends (not_connected), or
  // when it does not answer in time (timed_out); then it is ended.
  Result<Message> ask(const Message& request, std::chrono::milliseconds limit);
  // Who hears of events of that name from now on. When this returns no earlier handler is running.
  void handle(const std::string& event, EventHandler handler);

 private:
  class Conversation;

  Status begin();
  void tell(const Message& event);

  const std::function<Result<ChildProgram>()> program_;
  std::mutex handlersMutex_;  // held while a handler runs
  std::map<std::string, EventHandler> handlers_;
  std::mutex mutex_;  // held while somebody asks
  std::unique_ptr<Conversation> conversation_;
};

}  // namespace vantory
