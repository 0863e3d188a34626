// Linux's calls, and what Debian keeps in its files.
#include "platform/posix/kernel/Kernel.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/random.h>
#include <sys/utsname.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string_view>
#include <system_error>
#include <vector>

#include "base/Paths.h"
#include "base/Text.h"
#include "platform/posix/files/SmallFiles.h"

namespace vantory::kernel {

namespace {

// Names in archives need a UTF-8 locale, messages the plain one.
constexpr const char* kFixedEnvironment[] = {"PATH=/usr/bin:/bin", "LANG=C.UTF-8"};
constexpr const char* kInherited[] = {"HOME",
                                      "USER",
                                      "LOGNAME",
                                      "TZ",
                                      "DISPLAY",
                                      "WAYLAND_DISPLAY",
                                      "XAUTHORITY",
                                      "XDG_RUNTIME_DIR",
                                      "DBUS_SESSION_BUS_ADDRESS"};

// For a system that does not say what it is called.
std::string kernelName() {
  utsname name{};
  uname(&name);
  return std::string(name.sysname) + " " + name.release;
}

// Without the escapes of the kernel's table, such as "\040" for a blank.
std::string unescaped(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\\' && i + 3 < text.size()) {
      result += static_cast<char>((text[i + 1] - '0') * 64 + (text[i + 2] - '0') * 8 + (text[i + 3] - '0'));
      i += 3;
    } else {
      result += text[i];
    }
  }
  return result;
}

}  // namespace

int openPipe(Pipe& pipe) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return errno;
  pipe.readEnd = Descriptor(ends[0]);
  pipe.writeEnd = Descriptor(ends[1]);
  return 0;
}

int closeOthers(posix_spawn_file_actions_t& actions, short&, int first) {
  return posix_spawn_file_actions_addclosefrom_np(&actions, first);
}

void awaitEnd(pid_t child) {
  siginfo_t ended{};
  uninterrupted([&] { return waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT); });
}

std::span<const char* const> fixedEnvironment() {
  return kFixedEnvironment;
}

std::span<const char* const> inheritedVariables() {
  return kInherited;
}

void closeFrom(int first) {
  close_range(static_cast<unsigned>(first), ~0U, 0);
}

bool becomeUser(uid_t user, gid_t group) {
  if (setresgid(group, group, group) != 0 || setresuid(user, user, user) != 0) return false;
  if (setuid(0) == 0 || prctl(PR_SET_DUMPABLE, 0) != 0) std::abort();
  return true;
}

std::string workOf(pid_t process) {
  const auto status = readSmallFile("/proc/" + std::to_string(process) + "/stat", 4096);
  return status ? *status : "";
}

void takePending(const sigset_t& set) {
  const timespec noWait{};
  sigtimedwait(&set, nullptr, &noWait);
}

std::string ownPath() {
  std::error_code failure;
  std::string path = std::filesystem::read_symlink("/proc/self/exe", failure).native();
  // What an update that replaced the running program leaves: its path still names the program.
  constexpr std::string_view kReplaced = " (deleted)";
  if (path.ends_with(kReplaced) && !std::filesystem::exists(path, failure)) path.resize(path.size() - kReplaced.size());
  return path;
}

// The second file is the distribution's own, which the first may replace.
std::string systemName() {
  for (const char* file : {"/etc/os-release", "/usr/lib/os-release"}) {
    const std::optional<std::string> name = assignedValue(file, "PRETTY_NAME");
    if (name && !name->empty()) return *name;
  }
  return kernelName();
}

// The last of the longest mount points above it: one may hide another.
std::string fileSystemOf(const std::string& path) {
  std::ifstream table("/proc/self/mountinfo");
  std::string line, kind;
  std::size_t longest = 0;
  while (std::getline(table, line)) {
    const std::vector<std::string> words = split(line, ' ');
    const auto dash = std::ranges::find(words, "-");
    if (words.size() < 5 || words.end() - dash < 2) continue;
    const std::string mount = unescaped(words[4]);
    if (!paths::isWithin(path, mount) || mount.size() < longest) continue;
    longest = mount.size();
    kind = *(dash + 1);
  }
  return kind;
}

std::uint64_t memoryBytes() {
  const long pages = sysconf(_SC_PHYS_PAGES);
  const long pageSize = sysconf(_SC_PAGESIZE);
  if (pages < 0 || pageSize < 0) return 0;
  return static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(pageSize);
}

void fillRandomly(std::span<unsigned char> bytes) {
  uninterrupted([&] { return getrandom(bytes.data(), bytes.size(), 0); });
}

}  // namespace vantory::kernel
