// Hands open files to the lock helper.
#include "platform/linux/locks/LockHelper.h"

#include <sys/xattr.h>
#include <unistd.h>

#include <charconv>
#include <chrono>

#include "platform/linux/locks/LockProtocol.h"
#include "platform/posix/files/Errors.h"
#include "platform/posix/processes/HelperProgram.h"

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

// The request for as many of the paths, from the given one on, as fit into a message; at least one.
Message requestFor(const std::vector<std::string>& paths, std::size_t first, bool locked) {
  Message request{std::string(locked ? kLock : kUnlock)};
  std::size_t bytes = request.front().size() + 1;
  for (std::size_t i = first; i < paths.size() && request.size() <= kMostPathsAtOnce; ++i) {
    bytes += paths[i].size() + 1;
    if (i > first && bytes > kMaxMessageBytes) break;
    request.push_back(paths[i]);
  }
  return request;
}

}  // namespace

bool LockHelper::hasCapability() const {
  return !program_.path.empty() && getxattr(program_.path.c_str(), "security.capability", nullptr, 0) >= 0;
}

// Once; and once more when it has got its capability since.
void LockHelper::start() {
  if (program_.path.empty()) program_.path = helperProgram(std::string(kLockHelper));
  const bool isNewlyAble = !wasCapable_ && hasCapability();
  if (std::exchange(tried_, true) && !isNewlyAble) return;
  wasCapable_ = isNewlyAble;
  process_.reset();
  if (program_.path.empty()) return;
  if (auto started = HelperProcess::start(program_)) process_.emplace(std::move(*started));
}

// Adds the answer's numbers. False when none that fits the request comes.
bool LockHelper::ask(const Message& request, std::vector<int>& numbers) {
  if (!process_->channel().send(request)) return false;
  const auto answer = process_->channel().receive(kPatience);
  if (!answer || answer->size() != request.size() - 1) return false;
  for (const std::string& text : *answer) {
    const auto number = numberIn(text);
    if (!number) return false;
    numbers.push_back(*number);
  }
  return true;
}

// A helper that failed once is given up: a late answer of its would be taken for that to another request.
std::vector<int> LockHelper::setLocked(const std::vector<std::string>& paths, bool locked) {
  const std::lock_guard lock(mutex_);
  std::vector<int> numbers;
  if (!paths.empty()) start();
  while (process_ && numbers.size() < paths.size())
    if (!ask(requestFor(paths, numbers.size(), locked), numbers)) process_.reset();
  numbers.resize(paths.size(), EPERM);
  return numbers;
}

bool LockHelper::isRunning() {
  const std::lock_guard lock(mutex_);
  return process_.has_value();
}

std::string LockHelper::cure() {
  const std::lock_guard lock(mutex_);
  if (program_.path.empty()) return "Locking needs the lock helper, which is not installed.";
  if (access(program_.path.c_str(), X_OK) != 0)
    return "Locking needs the right to run the lock helper, " + program_.path + ", which an administrator can give.";
  if (hasCapability()) return "";
  return "Locking needs the lock helper: sudo setcap cap_linux_immutable=ep " + program_.path;
}

}  // namespace vantory
