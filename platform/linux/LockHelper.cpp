#include "platform/linux/LockHelper.h"

#include <charconv>
#include <chrono>

#include "platform/linux/Errors.h"
#include "platform/linux/lock/LockProtocol.h"

namespace vantory {

namespace {

// Longer than any working disk takes for a change of flags.
constexpr std::chrono::seconds kPatience{10};

std::optional<int> numberIn(const std::string& text) {
  int number = 0;
  const char* const end = text.data() + text.size();
  const auto [rest, failure] = std::from_chars(text.data(), end, number);
  if (failure != std::errc() || rest != end || number < 0) return std::nullopt;
  return number;
}

}  // namespace

std::optional<Status> LockHelper::setLocked(const std::string& path, bool locked) {
  const auto answer = ask({std::string(locked ? kLock : kUnlock), path});
  if (!answer) return std::nullopt;
  const auto number = answer->size() == 1 ? numberIn(answer->front()) : std::nullopt;
  if (!number) return std::nullopt;
  return *number == 0 ? Status() : Status(systemError(path, *number));
}

void LockHelper::start() {
  if (std::exchange(tried_, true)) return;
  if (program_.path.empty()) program_.path = helperProgram(std::string(kLockHelper));
  if (program_.path.empty()) return;
  if (auto started = HelperProcess::start(program_)) process_.emplace(std::move(*started));
}

// A helper that failed once is given up: a late answer of its would be taken for that to another question.
std::optional<Message> LockHelper::ask(const Message& request) {
  const std::lock_guard lock(mutex_);
  start();
  if (!process_) return std::nullopt;
  if (process_->channel().send(request))
    if (auto answer = process_->channel().receive(kPatience)) return std::move(*answer);
  process_.reset();
  return std::nullopt;
}

}  // namespace vantory
