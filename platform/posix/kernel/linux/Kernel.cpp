// Linux's calls, and what Debian keeps in its files.
#include "platform/posix/kernel/Kernel.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/utsname.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>

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
