#include "platform/linux/session/ApplicationProcesses.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <csignal>
#include <iterator>
#include <span>
#include <string_view>

#include "platform/linux/files/FolderReading.h"
#include "platform/linux/session/ApplicationUnits.h"
#include "platform/linux/session/ProcessView.h"

namespace vantory {

namespace {

// What holds a sandbox up is not the application: it ends by itself and passes no signal on.
constexpr std::array<std::string_view, 2> kSandboxPrograms = {"bwrap", "xdg-dbus-proxy"};

constexpr std::array<std::string_view, 5> kShells = {"sh", "bash", "dash", "zsh", "busybox"};

// Set by whatever starts applications from desktop entries, and inherited by all that they start in turn.
constexpr const char* kStartedEntry = "GIO_LAUNCHED_DESKTOP_FILE";
constexpr const char* kStartedProcess = "GIO_LAUNCHED_DESKTOP_FILE_PID";

// 0 when the text is no process number.
pid_t processNumber(std::string_view text) {
  pid_t number = 0;
  const char* end = text.data() + text.size();
  const auto [rest, failure] = std::from_chars(text.data(), end, number);
  return failure == std::errc() && rest == end && number > 0 ? number : 0;
}

bool runsOneOf(std::span<const std::string_view> programs, const ProcessView& process) {
  return std::find(programs.begin(), programs.end(), process.programName()) != programs.end();
}

// A shell script that starts an application and waits for it would leave it alone when it ended itself.
bool isShell(const ProcessView& process) {
  return runsOneOf(kShells, process);
}

// The name of the desktop entry that it, or what it descends from, was started by; empty when there was none.
std::string entryName(const ProcessView& process) {
  const std::string entry = process.variable(kStartedEntry);
  return entry.substr(entry.rfind('/') + 1);
}

}  // namespace

ApplicationProcesses::ApplicationProcesses(uid_t user, const std::string& folder)
    : user_(user), folder_(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {}

std::vector<pid_t> ApplicationProcesses::copies(const ApplicationTraits& application) const {
  std::vector<pid_t> found;
  for (const pid_t number : numbers()) {
    const ProcessView process(folder_.get(), number);
    if (process.isAliveFor(user_) && isOf(application, process)) found.push_back(number);
  }
  const auto isAmongFound = [&](pid_t number) { return std::find(found.begin(), found.end(), number) != found.end(); };
  std::vector<pid_t> first;
  std::copy_if(found.begin(), found.end(), std::back_inserter(first),
               [&](pid_t number) { return !anyAncestor(number, isAmongFound); });
  return first;
}

bool ApplicationProcesses::descends(pid_t number, pid_t ancestor) const {
  return number == ancestor || anyAncestor(number, [&](pid_t above) { return above == ancestor; });
}

std::vector<pid_t> ApplicationProcesses::toBeAsked(pid_t copy) const {
  if (!isShell(ProcessView(folder_.get(), copy))) return {copy};
  std::vector<pid_t> programs;
  for (const pid_t number : numbers())
    if (ProcessView(folder_.get(), number).parent() == copy) programs.push_back(number);
  return programs.empty() ? std::vector<pid_t>{copy} : programs;
}

std::vector<pid_t> ApplicationProcesses::numbers() const {
  const Result<std::vector<DirectoryEntry>> entries = readFolder(folder_.get(), "/proc", Detail::Names);
  std::vector<pid_t> numbers;
  if (!entries) return numbers;
  for (const DirectoryEntry& entry : *entries)
    if (const pid_t number = processNumber(entry.name); number != 0) numbers.push_back(number);
  return numbers;
}

// Processes come and go meanwhile, so that parents may seem to form a ring.
bool ApplicationProcesses::anyAncestor(pid_t number, const std::function<bool(pid_t)>& condition) const {
  constexpr int kDeepest = 1000;
  for (int steps = 0; steps < kDeepest; ++steps) {
    number = ProcessView(folder_.get(), number).parent();
    if (number <= 0) return false;
    if (condition(number)) return true;
  }
  return false;
}

// The descriptor keeps to the process that is looked at after it was opened, also should its number be given away.
bool ApplicationProcesses::terminate(pid_t number, const ApplicationTraits& application) const {
  const Descriptor handle(static_cast<int>(syscall(SYS_pidfd_open, number, 0)));
  const ProcessView process(folder_.get(), number);
  const ProcessView parent(folder_.get(), process.parent());
  const auto isOwn = [&](const ProcessView& one) { return one.isAliveFor(user_) && isOf(application, one); };
  const bool isWrapped = process.isAliveFor(user_) && isShell(parent) && isOwn(parent);
  if (!handle.valid() || (!isOwn(process) && !isWrapped)) return false;
  return syscall(SYS_pidfd_send_signal, handle.get(), SIGTERM, nullptr, 0) == 0;
}

bool ApplicationProcesses::isOf(const ApplicationTraits& application, const ProcessView& process) const {
  const pid_t number = process.number();
  if (application.identifier.empty()) return false;  // what has no name at all would pass for it
  if (number == getpid() || number == getppid()) return false;
  const bool shows = number == application.busOwner || isInUnitOf(application, process) ||
                     process.flatpakApplication() == application.identifier || wasStartedAs(application, process) ||
                     application.command.isRunBy(process);
  return shows && !runsOneOf(kSandboxPrograms, process);
}

bool ApplicationProcesses::wasStartedAs(const ApplicationTraits& application, const ProcessView& process) const {
  if (processNumber(process.variable(kStartedProcess)) != process.number()) return false;
  return entryName(process) == application.identifier + ".desktop";
}

bool ApplicationProcesses::isInUnitOf(const ApplicationTraits& application, const ProcessView& process) const {
  const std::string unit = unitOfProcess(process.controlGroups());
  if (!isUnitOfApplication(unit, application.identifier) && !isUnitOfSnap(unit, application.snap)) return false;
  return !wasStartedAsAnother(application, process);
}

// An application may have started another one, which then lives in its unit, maybe longer than itself. What a process
// has inherited from outside of the unit says nothing.
bool ApplicationProcesses::wasStartedAsAnother(const ApplicationTraits& application, const ProcessView& process) const {
  const std::string name = entryName(process);
  if (name.empty() || name == application.identifier + ".desktop") return false;
  const ProcessView started(folder_.get(), processNumber(process.variable(kStartedProcess)));
  return started.controlGroups() == process.controlGroups();
}

}  // namespace vantory
