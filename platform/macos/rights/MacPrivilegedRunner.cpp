// Asks the system for the right, and starts the helper with it.
#include "platform/macos/rights/MacPrivilegedRunner.h"

#include <fcntl.h>

#include <chrono>
#include <optional>
#include <utility>

#include "platform/macos/rights/TrustedProgram.h"
#include "platform/posix/rights/AdministratorTools.h"

namespace vantory {

namespace {

constexpr const char* kRight = "system.privilege.admin";
constexpr std::chrono::seconds kPatienceWithHelper{30};

}  // namespace

MacPrivilegedRunner::MacPrivilegedRunner(SystemLog& log, LoadCalls load, darwin::AuthorizationHandle handedDown,
                                         std::string helper)
    : log_(log),
      load_(load),
      helper_(std::move(helper)),
      right_(handedDown),
      isOwn_(!handedDown),
      authorized_(handedDown != nullptr) {}

MacPrivilegedRunner::~MacPrivilegedRunner() {
  letGo();
}

// The helper is looked at first: nobody is to type a password in vain, or for a program that is not ours.
bool MacPrivilegedRunner::authorize() {
  const std::lock_guard lock(mutex_);
  if (conversation_) return true;
  if (!load_()) {
    log_.write("Unable to authorize: this system has no service for it");
    return false;
  }
  if (const Status safe = checkSuperusersProgram(helper_); !safe) {
    log_.write("Unable to authorize: " + safe.error().text);
    return false;
  }
  if (right_ || obtainRight())
    if (startHelper()) return true;
  letGo();
  return false;
}

// What the person has cancelled needs no words.
bool MacPrivilegedRunner::obtainRight() {
  darwin::AuthorizationItem item{kRight, 0, nullptr, 0};
  const darwin::AuthorizationItems rights{1, &item};
  darwin::AuthorizationStatus status = load_()->create(nullptr, nullptr, darwin::kDefaults, &right_);
  if (status == darwin::kGranted)
    status = load_()->copyRights(right_, &rights, nullptr,
                                 darwin::kInteractionAllowed | darwin::kExtendRights | darwin::kPreAuthorize, nullptr);
  if (status == darwin::kNobodyToAsk)
    log_.write("Unable to authorize: nobody can be asked for a password here");
  else if (status != darwin::kGranted && status != darwin::kCancelled)
    log_.write("Unable to authorize - error " + std::to_string(status));
  return status == darwin::kGranted;
}

// The stream goes both ways: it is the helper's standard input and output.
bool MacPrivilegedRunner::startHelper() {
  FILE* stream = nullptr;
  char* const none[] = {nullptr};
  const auto status = load_()->executeWithPrivileges(right_, helper_.c_str(), darwin::kDefaults, none, &stream);
  if (status != darwin::kGranted || !stream) {
    log_.write("Unable to start " + helper_ + " - error " + std::to_string(status));
    return false;
  }
  Descriptor both(fcntl(fileno(stream), F_DUPFD_CLOEXEC, 0));
  (void)fclose(stream);
  StreamChannel channel(std::move(both));
  const Result<Message> greeting = channel.receive(kPatienceWithHelper);
  if (!greeting || *greeting != Message{kHelperReady}) {
    log_.write("Unable to start " + helper_);
    return false;
  }
  conversation_ = std::make_unique<RootConversation>(std::move(channel));
  authorized_ = true;
  giveUpRight();
  return true;
}

void MacPrivilegedRunner::release() {
  const std::lock_guard lock(mutex_);
  letGo();
}

// The helper ends with its conversation.
void MacPrivilegedRunner::letGo() {
  authorized_ = false;
  conversation_.reset();
  giveUpRight();
}

// Whoever has it can start any program as the superuser, and so it stays no longer than it takes to start the helper.
// One that was handed down is also another program's.
void MacPrivilegedRunner::giveUpRight() {
  if (right_) (void)load_()->free(std::exchange(right_, nullptr), isOwn_ ? darwin::kDestroyRights : darwin::kDefaults);
  isOwn_ = true;
}

bool MacPrivilegedRunner::knows(const std::string& tool) const {
  return AdministratorTools::knows(tool);
}

// With a right that was handed down the helper starts when it is first needed.
int MacPrivilegedRunner::run(const std::string& tool, const std::vector<std::string>& arguments) {
  if (authorized_ && !authorize()) return kFailed;
  const std::lock_guard lock(mutex_);
  if (!conversation_) return kFailed;
  const Status done = conversation_->ask(requestFor(tool, arguments));
  if (!done && done.error().code == std::errc::not_connected) letGo();
  return done ? kDone : kFailed;
}

darwin::AuthorizationHandle rightHandedDown() {
  const darwin::AuthorizationCalls* const calls = darwin::authorizationCalls();
  darwin::AuthorizationHandle right = nullptr;
  return calls && calls->copyPrivilegedReference(&right, darwin::kDefaults) == darwin::kGranted ? right : nullptr;
}

}  // namespace vantory
