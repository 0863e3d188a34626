// The calls of macOS.
#include "platform/posix/kernel/Kernel.h"

#include <fcntl.h>
#include <libproc.h>
#include <mach-o/dyld.h>
#include <sys/event.h>
#include <sys/mount.h>
#include <sys/random.h>
#include <sys/sysctl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>

namespace vantory::kernel {

namespace {

// Names in archives need a UTF-8 locale; there is none for plain messages with it.
constexpr const char* kFixedEnvironment[] = {"PATH=/usr/bin:/bin:/usr/sbin:/sbin", "LANG=en_US.UTF-8"};
constexpr const char* kInherited[] = {"HOME", "USER", "LOGNAME", "TMPDIR", "TZ"};

std::string textOf(const char* name) {
  char text[256];
  std::size_t size = sizeof text;
  if (sysctlbyname(name, text, &size, nullptr, 0) != 0 || size == 0) return {};
  return std::string(text, size - 1);
}

}  // namespace

// A program that is started in between gets neither end: closeOthers() sees to that.
int openPipe(Pipe& pipe) {
  int ends[2];
  if (::pipe(ends) != 0) return errno;
  pipe.readEnd = Descriptor(ends[0]);
  pipe.writeEnd = Descriptor(ends[1]);
  for (const int end : ends)
    if (fcntl(end, F_SETFD, FD_CLOEXEC) != 0) return errno;
  return 0;
}

int closeOthers(posix_spawn_file_actions_t&, short& flags, int) {
  flags = static_cast<short>(flags | POSIX_SPAWN_CLOEXEC_DEFAULT);
  return 0;
}

// waitid() tells of children that were only stopped, too. One that has ended already cannot be waited for this way.
void awaitEnd(pid_t child) {
  const Descriptor queue(kqueue());
  struct kevent end {};
  EV_SET(&end, static_cast<uintptr_t>(child), EVFILT_PROC, EV_ADD | EV_ONESHOT, NOTE_EXIT, 0, nullptr);
  if (!queue.valid() || kevent(queue.get(), &end, 1, nullptr, 0, nullptr) != 0) return;
  uninterrupted([&] { return kevent(queue.get(), nullptr, 0, &end, 1, nullptr); });
}

std::span<const char* const> fixedEnvironment() {
  return kFixedEnvironment;
}

std::span<const char* const> inheritedVariables() {
  return kInherited;
}

void closeFrom(int first) {
  for (int each = getdtablesize() - 1; each >= first; --each) close(each);
}

// The superuser's calls change all of a process's identities. One that has changed them cannot be looked into.
bool becomeUser(uid_t user, gid_t group) {
  if (setgid(group) != 0 || setuid(user) != 0) return false;
  if (setuid(0) == 0 || getuid() != user || geteuid() != user || getegid() != group) std::abort();
  return true;
}

std::string workOf(pid_t process) {
  proc_taskinfo info{};
  if (proc_pidinfo(process, PROC_PIDTASKINFO, 0, &info, sizeof info) != sizeof info) return {};
  return std::to_string(info.pti_total_user + info.pti_total_system);
}

void takePending(const sigset_t& set) {
  sigset_t pending;
  sigpending(&pending);
  for (int number = 1; number < NSIG; ++number) {
    if (sigismember(&set, number) != 1 || sigismember(&pending, number) != 1) continue;
    int taken = 0;
    sigwait(&set, &taken);
    return;
  }
}

std::string ownPath() {
  std::string path(PATH_MAX, '\0');
  auto size = static_cast<std::uint32_t>(path.size());
  if (_NSGetExecutablePath(path.data(), &size) != 0) {
    path.resize(size);
    if (_NSGetExecutablePath(path.data(), &size) != 0) return {};
  }
  char real[PATH_MAX];
  return realpath(path.c_str(), real) ? real : "";
}

// From macOS 26 on, programs built with headers of one before are told 16 for 26 and so on. There never was a 16.
std::string systemName() {
  const std::string told = textOf("kern.osproductversion");
  const int major = std::atoi(told.c_str());
  const bool isOld = major >= 16 && major < 26;
  const std::string version = isOld ? std::to_string(major + 10) + told.substr(2) : told;
  return "macOS " + version + " (" + textOf("kern.osversion") + ")";
}

std::string fileSystemOf(const std::string& path) {
  struct statfs volume;
  return statfs(path.c_str(), &volume) == 0 ? volume.f_fstypename : "";
}

std::uint64_t memoryBytes() {
  std::uint64_t bytes = 0;
  std::size_t size = sizeof bytes;
  return sysctlbyname("hw.memsize", &bytes, &size, nullptr, 0) == 0 ? bytes : 0;
}

void fillRandomly(std::span<unsigned char> bytes) {
  getentropy(bytes.data(), bytes.size());
}

}  // namespace vantory::kernel
