// Requests to a process of the superuser's.
#pragma once

#include <mutex>
#include <utility>

#include "platform/PrivilegedRunner.h"
#include "platform/posix/processes/StreamChannel.h"

namespace vantory {

// One request at a time, each answered before the next. Any thread.
class RootConversation {
 public:
  explicit RootConversation(StreamChannel channel) : channel_(std::move(channel)) {}

  // What the request has come to; a process that is gone answers not_connected. The file that it opened goes to `file`.
  Status ask(const Message& request, Descriptor* file = nullptr);

 private:
  std::mutex mutex_;
  StreamChannel channel_;
};

// The answer to a request, and what it means.
Message answerFor(const Status& done);
Status meaningOf(const Message& answer);

// Has the superuser's process that this one comes from do what takes its rights.
class RootRunner : public PrivilegedRunner {
 public:
  // The conversation outlives it.
  explicit RootRunner(RootConversation& superuser) : superuser_(superuser) {}

  bool authorize() override { return true; }
  void release() override {}
  bool isAuthorized() const override { return true; }
  bool knows(const std::string& tool) const override;
  int run(const std::string& tool, const std::vector<std::string>& arguments) override;

 private:
  RootConversation& superuser_;
};

}  // namespace vantory
