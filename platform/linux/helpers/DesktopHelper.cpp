// Starts the desktop's helper when it is first asked, and gives it up when it hangs.
#include "platform/linux/helpers/DesktopHelper.h"

#include <charconv>
#include <condition_variable>
#include <optional>
#include <thread>
#include <utility>

#include "platform/linux/helpers/HelperProcess.h"
#include "platform/posix/files/Errors.h"

namespace vantory {

namespace {

constexpr std::string_view kAbout = "the desktop helper program";

// An answer is "ok" and its values, or "error", a number and a text.
Result<Message> valuesOf(Message answer) {
  if (answer.front() == "ok") {
    answer.erase(answer.begin());
    return answer;
  }
  if (answer.front() != "error" || answer.size() != 3) return systemError(kAbout, EBADMSG);
  int number = 0;
  const std::string& digits = answer[1];
  const auto [rest, failure] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (failure != std::errc() || rest != digits.data() + digits.size() || number <= 0)
    return systemError(kAbout, EBADMSG);
  return Error{static_cast<std::errc>(number), std::move(answer[2])};
}

}  // namespace

// The program while it runs, and the thread that reads what it says.
class DesktopHelper::Conversation {
 public:
  Conversation(DesktopHelper& owner, HelperProcess process)
      : owner_(owner), process_(std::move(process)), reader_(&Conversation::read, this) {}

  // The end of the conversation wakes the reader.
  ~Conversation() {
    process_.channel().end();
    reader_.join();
  }

  bool ended() {
    const std::lock_guard lock(mutex_);
    return ended_;
  }

  // One at a time; the owner's lock sees to that.
  Result<Message> ask(const Message& request, std::chrono::milliseconds limit) {
    std::unique_lock lock(mutex_);
    answer_.reset();
    const Status sent = process_.channel().send(request);
    if (!sent) return sent.error();
    changed_.wait_for(lock, limit, [this] { return answer_ || ended_; });
    if (!answer_) return systemError(kAbout, ended_ ? ENOTCONN : ETIMEDOUT);
    return *std::exchange(answer_, std::nullopt);
  }

 private:
  // The reader's thread. Events may come at any time, also ahead of an answer.
  void read() {
    while (Result<Message> message = process_.channel().receive()) {
      if (message->front() == "event")
        owner_.tell(*message);
      else
        keep(std::move(*message));
    }
    const std::lock_guard lock(mutex_);
    ended_ = true;
    changed_.notify_all();
  }

  // One that nobody waits for is dropped with the next request.
  void keep(Message answer) {
    const std::lock_guard lock(mutex_);
    answer_ = std::move(answer);
    changed_.notify_all();
  }

  DesktopHelper& owner_;
  HelperProcess process_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::optional<Message> answer_;
  bool ended_ = false;
  std::thread reader_;  // begins when all else is there
};

DesktopHelper::DesktopHelper(std::function<Result<ChildProgram>()> program) : program_(std::move(program)) {}

DesktopHelper::~DesktopHelper() = default;

Result<Message> DesktopHelper::ask(const Message& request, std::chrono::milliseconds limit) {
  const std::lock_guard lock(mutex_);
  if (const Status begun = begin(); !begun) return begun.error();
  Result<Message> answer = conversation_->ask(request, limit);
  if (answer) return valuesOf(std::move(*answer));
  // Given up after a silence, too: a late answer would pass for that to the next request.
  const std::errc reason = answer.error().code;
  if (reason == std::errc::not_connected || reason == std::errc::timed_out) conversation_.reset();
  return answer;
}

void DesktopHelper::handle(const std::string& event, EventHandler handler) {
  const std::lock_guard lock(handlersMutex_);
  handlers_[event] = std::move(handler);
}

// Under the lock.
Status DesktopHelper::begin() {
  if (conversation_ && !conversation_->ended()) return {};
  conversation_.reset();
  Result<ChildProgram> program = program_();
  if (!program) return program.error();
  Result<HelperProcess> process = HelperProcess::start(std::move(*program));
  if (!process) return process.error();
  conversation_ = std::make_unique<Conversation>(*this, std::move(*process));
  return {};
}

void DesktopHelper::tell(const Message& event) {
  if (event.size() < 2) return;
  const std::lock_guard lock(handlersMutex_);
  const auto known = handlers_.find(event[1]);
  if (known != handlers_.end() && known->second) known->second(Message(event.begin() + 2, event.end()));
}

}  // namespace vantory
