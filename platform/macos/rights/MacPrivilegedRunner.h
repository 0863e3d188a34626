// Administrator rights for an ordinary user's process.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <string>

#include "platform/PrivilegedRunner.h"
#include "platform/SystemLog.h"
#include "platform/macos/darwin/Authorization.h"
#include "platform/macos/rights/RootConversation.h"

namespace vantory {

inline constexpr const char* kMacRootHelper = "/Library/PrivilegedHelperTools/vantory-root-helper";

// Has one helper program of the superuser's do the work. The system starts it once a person has given an
// administrator's password in its dialog; it then serves requests until the right is given up or this process ends.
class MacPrivilegedRunner : public PrivilegedRunner {
 public:
  using LoadCalls = const darwin::AuthorizationCalls* (*)();

  // The log outlives it; the calls are loaded when they are first needed. A right that another program has handed down
  // to this one is used without a dialog.
  MacPrivilegedRunner(SystemLog& log, LoadCalls load, darwin::AuthorizationHandle handedDown = nullptr,
                      std::string helper = kMacRootHelper);
  ~MacPrivilegedRunner() override;

  // Waits for the person. At once false without the helper, or where nobody can be asked.
  bool authorize() override;
  void release() override;
  bool isAuthorized() const override { return authorized_; }
  bool knows(const std::string& tool) const override;
  // A helper that has died has taken the right with it.
  int run(const std::string& tool, const std::vector<std::string>& arguments) override;

 private:
  bool obtainRight();
  bool startHelper();
  void letGo();
  void giveUpRight();

  SystemLog& log_;
  const LoadCalls load_;
  const std::string helper_;
  std::mutex mutex_;                   // one request at a time
  darwin::AuthorizationHandle right_;  // null again as soon as the helper runs
  bool isOwn_;                         // not handed down
  std::unique_ptr<RootConversation> conversation_;
  std::atomic<bool> authorized_;
};

// The right that the program which started this one has handed down; null where there is none. For a process that works
// as the superuser for a user, before it gives that up.
darwin::AuthorizationHandle rightHandedDown();

}  // namespace vantory
