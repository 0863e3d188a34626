// Forks a process for each home, and listens to all of them.
#include "platform/posix/homes/PosixHomeWorkers.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <exception>
#include <string_view>
#include <utility>

#include "base/ExitCodes.h"
#include "platform/posix/files/Errors.h"
#include "platform/posix/homes/HomeListing.h"
#include "platform/posix/homes/HomeOwner.h"
#include "platform/posix/kernel/Kernel.h"
#include "platform/posix/processes/PasswordDatabase.h"
#include "platform/posix/processes/ProcessCalls.h"

namespace vantory {

namespace {

using Steady = std::chrono::steady_clock;
using namespace std::chrono_literals;

// More than a task can have to say; beyond it its process is not listened to.
constexpr std::size_t kMostSaid = 16U << 20U;

// What a home's process says: texts, each behind its length. The owner as soon as it is known, an empty one when the
// work begins, the rest at the end.
void append(std::string& said, std::string_view text) {
  const auto length = static_cast<std::uint32_t>(text.size());
  said.append(reinterpret_cast<const char*>(&length), sizeof length).append(text);
}

std::optional<std::string> takeText(std::string_view& said) {
  std::uint32_t length = 0;
  if (said.size() < sizeof length) return std::nullopt;
  std::memcpy(&length, said.data(), sizeof length);
  if (said.size() - sizeof length < length) return std::nullopt;
  std::string text(said.substr(sizeof length, length));
  said.remove_prefix(sizeof length + length);
  return text;
}

// Whatever it says, the others' are not to suffer.
template <class Number>
Number numberIn(const std::string& digits) {
  Number number = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), number);
  return number;
}

std::string wordsFor(const HomeResult& result) {
  std::string said;
  append(said, std::to_string(result.exitCode));
  append(said, result.why);
  append(said, result.output);
  if (!result.counts) return said;
  for (const std::size_t count : {result.counts->done, result.counts->skipped, result.counts->failed})
    append(said, std::to_string(count));
  return said;
}

bool isBegun(std::string_view said) {
  return takeText(said) && takeText(said);
}

// Whether the process said all.
bool understand(std::string_view said, HomeResult& result) {
  result.owner = takeText(said).value_or("");
  takeText(said);
  const auto exitCode = takeText(said), why = takeText(said), output = takeText(said);
  if (!output) return false;
  result.exitCode = numberIn<int>(*exitCode);
  result.why = *why;
  result.output = *output;
  const auto done = takeText(said), skipped = takeText(said), failed = takeText(said);
  const auto count = numberIn<std::size_t>;
  if (failed) result.counts = {count(*done), count(*skipped), count(*failed)};
  return true;
}

void writeAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = uninterrupted([&] { return write(descriptor, text.data(), text.size()); });
    if (written <= 0) return;  // nobody listens any more
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

// Nothing of the superuser's terminal, files and signals is left to the process; `answer` becomes its only descriptor
// but for the standard streams.
void detach(Descriptor& answer) {
  constexpr int kAnswer = STDERR_FILENO + 1;
  setsid();
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) std::signal(signal, SIG_DFL);
  const int null = open("/dev/null", O_RDWR);
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) dup2(null, stream);
  // Neither is among the standard streams, which are never closed.
  dup2(answer.release(), kAnswer);
  kernel::closeFrom(kAnswer + 1);
  answer = Descriptor(kAnswer);
  fcntl(kAnswer, F_SETFD, FD_CLOEXEC);
}

// As its owner, whose name is filled in; an ordinary user's process stays that user's.
Status enter(const std::string& home, bool changesFiles, std::string& name) {
  if (getuid() != 0) {
    struct stat status {};
    if (stat(home.c_str(), &status) == 0) name = databaseName(status.st_uid).value_or("");
    const Status isOurs = changesFiles ? checkIsNotOthers(home) : Status();
    return isOurs ? adoptHome(home) : isOurs;
  }
  const auto owner = ownerOfHome(home);
  if (!owner) return owner.error();
  name = owner->name;
  return becomeOwner(*owner);
}

std::string sentence(const Error& error) {
  return error.text.ends_with('.') ? error.text : error.text + ".";
}

HomeResult passedOver(int exitCode, std::string why) {
  return {.home = {}, .owner = {}, .exitCode = exitCode, .why = std::move(why)};
}

}  // namespace

PosixHomeWorkers::PosixHomeWorkers(HomeWork work) : work_(std::move(work)) {
  fillStandardStreams();
  std::signal(SIGPIPE, SIG_IGN);  // a reader that has gone ends nothing
}

Result<std::vector<std::string>> PosixHomeWorkers::homesMatching(const std::string& pattern) {
  return listHomes(pattern, work_.patience);
}

// While homes are only looked for, a signal ends the program as by default: the folder above may be dead.
Status PosixHomeWorkers::start(const std::string& home) {
  if (!isReporting_) endRequest_ = signals_.startReporting();
  isReporting_ = true;
  kernel::Pipe pipe;
  if (const int failure = kernel::openPipe(pipe); failure != 0) return systemError(home, failure);
  const pid_t process = fork();
  if (process < 0) return systemError(home);
  if (process == 0) workIn(home, std::move(pipe.writeEnd));
  workers_.push_back({.home = home,
                      .process = process,
                      .answer = std::move(pipe.readEnd),
                      .deadline = Steady::now() + work_.patience,
                      .latest = Steady::now() + work_.longest});
  return {};
}

// The copy of the process: it never returns to what it is a copy of.
void PosixHomeWorkers::workIn(const std::string& home, Descriptor answer) const {
  try {
    detach(answer);
    // Where nobody is left to end it.
    alarm(static_cast<unsigned>(std::chrono::ceil<std::chrono::minutes>(work_.longest).count() + 1) * 60);
    const auto say = [&](std::string_view text) {
      std::string said;
      append(said, text);
      writeAll(answer.get(), said);
    };
    std::string owner;
    const Status entered = enter(home, work_.changesFiles, owner);
    say(owner);
    const auto busyFile = entered && work_.busyFile ? work_.busyFile(home) : std::nullopt;
    say("");
    HomeResult result;
    if (!entered) {
      const bool isNobodys = entered.error().code == std::errc::operation_not_supported;
      result = passedOver(isNobodys ? kNothingMatched : kNotBegun, sentence(entered.error()));
    } else if (busyFile) {
      result = passedOver(kNotBegun, "Somebody works there: " + *busyFile +
                                         " was changed within the last minute. With --busy it is done all the same.");
    } else {
      result = work_.run();
    }
    writeAll(answer.get(), wordsFor(result));
  } catch (const std::exception&) {
    _exit(kNotBegun);
  }
  _exit(0);
}

std::optional<HomeResult> PosixHomeWorkers::next() {
  while (true) {
    for (auto worker = workers_.begin(); worker != workers_.end(); ++worker)
      if (auto result = resultOf(*worker)) {
        workers_.erase(worker);
        return result;
      }
    pollfd request{endRequest_, POLLIN, 0};
    if (endRequest_ >= 0 && poll(&request, 1, 0) > 0) {
      endRequest_ = -1;
      for (Worker& worker : workers_) worker.latest = std::min(worker.latest, Steady::now() + work_.patienceAtEnd);
      return std::nullopt;
    }
    listen();
  }
}

// Until one says something, must be looked after, or the program is asked to end.
void PosixHomeWorkers::listen() {
  std::vector<pollfd> sources{{endRequest_, POLLIN, 0}};
  auto deadline = Steady::time_point::max();
  for (const Worker& worker : workers_) {
    sources.push_back({worker.answer.get(), POLLIN, 0});
    deadline = std::min({deadline, worker.deadline, worker.latest});
  }
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Steady::now());
  if (poll(sources.data(), sources.size(), static_cast<int>(std::max(left, 0ms).count())) <= 0) return;
  auto source = sources.begin() + 1;
  for (Worker& worker : workers_)
    if ((source++)->revents != 0) read(worker);
}

void PosixHomeWorkers::read(Worker& worker) {
  std::array<char, 65536> bytes;
  const ssize_t length = uninterrupted([&] { return ::read(worker.answer.get(), bytes.data(), bytes.size()); });
  if (length <= 0 || worker.said.size() > kMostSaid) {
    worker.isAtEnd = true;
    return;
  }
  const bool wasBegun = isBegun(worker.said);
  worker.said.append(bytes.data(), static_cast<std::size_t>(length));
  if (!wasBegun && isBegun(worker.said)) worker.deadline = Steady::now() + work_.patienceWithWork;
}

std::optional<HomeResult> PosixHomeWorkers::resultOf(Worker& worker) {
  HomeResult result{.home = worker.home, .owner = {}, .exitCode = kDoneInPart};
  if (!worker.isAtEnd) {
    const bool isLate = Steady::now() >= worker.latest;
    if (!isLate && (Steady::now() < worker.deadline || !standsStill(worker))) return std::nullopt;
    // One that waits in the kernel for a dead file system may never end; nobody waits for it.
    kill(worker.process, SIGKILL);
    waitForChild(worker.process, 100ms);
    understand(worker.said, result);
    result.exitCode = isBegun(worker.said) ? kDoneInPart : kNotBegun;
    result.why = isLate ? "It took too long, and was ended." : "It does not answer: the file system may be dead.";
    return result;
  }
  worker.answer = {};
  const auto code = waitForChild(worker.process, 2s);
  if (understand(worker.said, result)) return result;
  constexpr int kSignalled = 128;
  result.why = worker.said.size() > kMostSaid ? "It has too much to say" : "Its process ended before the task";
  if (code.value_or(0) > kSignalled) result.why += ", by signal " + std::to_string(*code - kSignalled);
  result.why += ".";
  return result;
}

// One that was not even begun has had its time. What works uses the processor now and then, also where the disk is
// slow.
bool PosixHomeWorkers::standsStill(Worker& worker) const {
  if (!isBegun(worker.said)) return true;
  const std::string work = kernel::workOf(worker.process);
  const bool stands = !work.empty() && work == worker.work;
  if (!work.empty()) worker.work = work;
  worker.deadline = Steady::now() + work_.patienceWithWork;
  return stands;
}

}  // namespace vantory
