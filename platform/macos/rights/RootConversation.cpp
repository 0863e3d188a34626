// Asks, and understands answers.
#include "platform/macos/rights/RootConversation.h"

#include <charconv>

#include "platform/posix/files/Errors.h"
#include "platform/posix/rights/AdministratorTools.h"

namespace vantory {

namespace {

constexpr const char* kConsentMissing = "consent missing";

}  // namespace

Status RootConversation::ask(const Message& request, Descriptor* file) {
  const std::lock_guard lock(mutex_);
  const Status sent = channel_.send(request);
  if (!sent && sent.error().code != std::errc::not_connected) return sent;  // the request itself cannot travel
  // Also of a process that has ended: its last answer may still lie there.
  const Result<Message> answer = channel_.receive(std::nullopt, file);
  return answer ? meaningOf(*answer) : answer.status();
}

// A cause in as much text as it takes would not travel where it holds long paths.
Message answerFor(const Status& done) {
  constexpr std::size_t kLongestCause = 8192;
  if (done) return {kHelperDone};
  const Error& cause = done.error();
  return {kHelperFailed, std::to_string(static_cast<int>(cause.code)), cause.text.substr(0, kLongestCause), cause.cure,
          cause.consentMissing ? kConsentMissing : ""};
}

Status meaningOf(const Message& answer) {
  if (answer == Message{kHelperDone}) return {};
  int code = 0;
  if (answer.size() != 5 || answer.front() != kHelperFailed) return systemError(kConversation, EBADMSG);
  std::from_chars(answer[1].data(), answer[1].data() + answer[1].size(), code);
  return Error{static_cast<std::errc>(code), answer[2], answer[3], answer[4] == kConsentMissing};
}

bool RootRunner::knows(const std::string& tool) const {
  return AdministratorTools::knows(tool);
}

int RootRunner::run(const std::string& tool, const std::vector<std::string>& arguments) {
  return superuser_.ask(requestFor(tool, arguments)) ? kDone : kFailed;
}

}  // namespace vantory
