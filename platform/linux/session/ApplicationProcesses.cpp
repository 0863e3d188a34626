// Tells an application's processes by their scopes and their commands.
#include "platform/linux/session/ApplicationProcesses.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <iterator>
#include <span>
#include <string_view>

#include "base/Paths.h"
#include "platform/linux/files/Folders.h"
#include "platform/linux/session/ProcessView.h"

namespace vantory {

namespace {

constexpr std::string_view kScope = ".scope";
constexpr std::string_view kService = ".service";
constexpr std::string_view kUserManager = "user@";
constexpr std::size_t kUuidLength = 36;

// Takes the text up to the separator, and the separator, off the front of `rest`.
std::string_view takeUntil(std::string_view& rest, char separator) {
  const std::size_t end = std::min(rest.find(separator), rest.size());
  const std::string_view part = rest.substr(0, end);
  rest.remove_prefix(std::min(end + 1, rest.size()));
  return part;
}

bool removeSuffix(std::string_view& text, std::string_view suffix) {
  if (!text.ends_with(suffix)) return false;
  text.remove_suffix(suffix.size());
  return true;
}

// The user's own service manager is a service itself; the units it made lie below it.
std::string_view unitInPath(std::string_view path) {
  std::string_view unit;
  while (!path.empty()) {
    const std::string_view part = takeUntil(path, '/');
    const bool isManager = part.starts_with(kUserManager) && part.ends_with(kService);
    if (isManager)
      unit = {};
    else if (unit.empty() && (part.ends_with(kScope) || part.ends_with(kService)))
      unit = part;
  }
  return unit;
}

// With each "\xHH" as the byte it stands for.
std::string unescaped(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    unsigned byte = 0;
    const std::string_view digits = text.substr(i).starts_with("\\x") ? text.substr(i + 2, 2) : "";
    const char* end = digits.data() + digits.size();
    if (digits.size() == 2 && std::from_chars(digits.data(), end, byte, 16).ptr == end) {
      result += static_cast<char>(byte);
      i += 3;
    } else {
      result += text[i];
    }
  }
  return result;
}

// As snapd writes it, in small letters.
bool isUuid(std::string_view text) {
  return text.size() == kUuidLength && text.find_first_not_of("0123456789abcdef-") == std::string_view::npos;
}

// What holds a sandbox up is not the application: it ends by itself.
constexpr std::array<std::string_view, 2> kSandboxPrograms = {"bwrap", "xdg-dbus-proxy"};

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
  return std::find(programs.begin(), programs.end(), paths::lastComponent(process.program())) != programs.end();
}

// The name of the desktop entry that it, or what it descends from, was started by; empty when there was none.
std::string entryName(const ProcessView& process) {
  return paths::lastComponent(process.variable(kStartedEntry));
}

}  // namespace

// One line for each hierarchy of control groups, of which only systemd's tells of units.
std::string unitOfProcess(std::string_view controlGroups) {
  while (!controlGroups.empty()) {
    std::string_view path = takeUntil(controlGroups, '\n');
    takeUntil(path, ':');
    const std::string_view controllers = takeUntil(path, ':');
    if (!controllers.empty() && controllers != "name=systemd") continue;
    if (const std::string_view unit = unitInPath(path); !unit.empty()) return std::string(unit);
  }
  return {};
}

// Dashes within an id are escaped, so that the last dash stands before it.
bool isUnitOfApplication(std::string_view unit, std::string_view identifier) {
  if (!unit.starts_with("app-")) return false;
  if (removeSuffix(unit, kService))
    unit = unit.substr(0, unit.find('@'));
  else if (removeSuffix(unit, kScope))
    unit = unit.substr(0, unit.rfind('-'));
  else
    return false;
  const std::size_t dash = unit.rfind('-');
  return dash != std::string_view::npos && unescaped(unit.substr(dash + 1)) == identifier;
}

// "snap.INSTANCE.APP.service", "snap.INSTANCE.APP.UUID.scope" or "snap.INSTANCE.APP-UUID.scope"
bool isUnitOfSnap(std::string_view unit, std::string_view snapApplication) {
  if (snapApplication.empty() || !unit.starts_with("snap.")) return false;
  unit.remove_prefix(std::string_view("snap.").size());
  if (!unit.starts_with(snapApplication)) return false;
  unit.remove_prefix(snapApplication.size());
  if (unit == kService) return true;
  if (!removeSuffix(unit, kScope) || (!unit.starts_with('.') && !unit.starts_with('-'))) return false;
  return isUuid(unit.substr(1));
}

ApplicationProcesses::ApplicationProcesses(uid_t user, const std::string& folder)
    : user_(user), folder_(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {}

// Of those found the ones without an ancestor among them: the others are their children.
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

bool ApplicationProcesses::isOf(const ApplicationTraits& application, const ProcessView& process) const {
  const pid_t number = process.number();
  if (application.identifier.empty()) return false;  // what has no name at all would pass for it
  if (number == getpid() || number == getppid()) return false;
  const bool shows = number == application.busOwner || isInUnitOf(application, process) ||
                     process.flatpakApplication() == application.identifier || wasStartedAs(application, process) ||
                     application.command.isRunBy(process);
  return shows && !runsOneOf(kSandboxPrograms, process);
}

// A child inherits the variables, but the number in them is not its own.
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
