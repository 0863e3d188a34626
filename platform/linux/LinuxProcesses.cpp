#include "platform/linux/LinuxProcesses.h"

#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <utility>

#include "platform/linux/Descriptor.h"
#include "platform/linux/Errors.h"
#include "platform/linux/LinuxProcess.h"

namespace vantory {

namespace {

constexpr int kFirstOtherDescriptor = 3;

// Names in archives need a UTF-8 locale, messages the plain one.
constexpr const char* kFixedEnvironment[] = {"PATH=/usr/bin:/bin", "LANG=C.UTF-8"};
constexpr const char* kPassedOn[] = {"HOME",
                                     "USER",
                                     "LOGNAME",
                                     "TZ",
                                     "DISPLAY",
                                     "WAYLAND_DISPLAY",
                                     "XAUTHORITY",
                                     "XDG_RUNTIME_DIR",
                                     "DBUS_SESSION_BUS_ADDRESS"};

std::vector<std::string> cleanEnvironment() {
  std::vector<std::string> environment(std::begin(kFixedEnvironment), std::end(kFixedEnvironment));
  if (getuid() == 0 || geteuid() == 0) return environment;
  for (const std::string name : kPassedOn)
    if (const char* value = std::getenv(name.c_str())) environment.push_back(name + "=" + value);
  return environment;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

// Above the standard streams, which the child's own take the place of.
Descriptor movedUp(Descriptor descriptor) {
  if (descriptor.get() >= kFirstOtherDescriptor) return descriptor;
  return Descriptor(fcntl(descriptor.get(), F_DUPFD_CLOEXEC, kFirstOtherDescriptor));
}

struct Pipe {
  Descriptor readEnd;
  Descriptor writeEnd;
};

// 0, or the error's number.
int openPipe(Pipe& pipe) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return errno;
  pipe.readEnd = Descriptor(ends[0]);
  pipe.writeEnd = Descriptor(ends[1]);
  pipe.readEnd = movedUp(std::move(pipe.readEnd));
  pipe.writeEnd = movedUp(std::move(pipe.writeEnd));
  return pipe.readEnd.valid() && pipe.writeEnd.valid() ? 0 : errno;
}

// What the child does before it becomes the program. Each step answers 0 or the error's number.
class ChildSetup {
 public:
  ChildSetup() {
    posix_spawn_file_actions_init(&actions_);
    posix_spawnattr_init(&attributes_);
  }
  ~ChildSetup() {
    posix_spawnattr_destroy(&attributes_);
    posix_spawn_file_actions_destroy(&actions_);
  }
  ChildSetup(const ChildSetup&) = delete;
  ChildSetup& operator=(const ChildSetup&) = delete;

  // The stream writes to the pipe, or to the null device when there is none.
  int connect(int stream, const Pipe& pipe) {
    if (pipe.writeEnd.valid()) return posix_spawn_file_actions_adddup2(&actions_, pipe.writeEnd.get(), stream);
    return openNullDevice(stream, O_WRONLY);
  }
  int openNullDevice(int stream, int mode) {
    return posix_spawn_file_actions_addopen(&actions_, stream, "/dev/null", mode, 0);
  }
  int closeOthers() { return posix_spawn_file_actions_addclosefrom_np(&actions_, kFirstOtherDescriptor); }

  int resetSignals() {
    sigset_t all;
    sigset_t none;
    sigfillset(&all);
    sigemptyset(&none);
    posix_spawnattr_setsigdefault(&attributes_, &all);
    posix_spawnattr_setsigmask(&attributes_, &none);
    return posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
  }

  int start(const std::string& program, const std::vector<std::string>& arguments, pid_t& child) {
    std::vector<std::string> list{program};
    list.insert(list.end(), arguments.begin(), arguments.end());
    std::vector<std::string> environment = cleanEnvironment();
    return posix_spawn(&child, program.c_str(), &actions_, &attributes_, pointersTo(list).data(),
                       pointersTo(environment).data());
  }

 private:
  posix_spawn_file_actions_t actions_;
  posix_spawnattr_t attributes_;
};

// A parent that ignores SIGCHLD hands that down, and with it no child's exit status could be had.
void makeChildrenWaitable() {
  struct sigaction action {};
  if (sigaction(SIGCHLD, nullptr, &action) != 0) return;
  if (action.sa_handler != SIG_IGN && (action.sa_flags & SA_NOCLDWAIT) == 0) return;
  std::signal(SIGCHLD, SIG_DFL);
}

bool holdsNul(const std::string& text) {
  return text.find('\0') != std::string::npos;
}

}  // namespace

Result<std::unique_ptr<Process>> LinuxProcesses::start(const std::string& program,
                                                       const std::vector<std::string>& arguments, Streams streams) {
  if (!program.starts_with('/') || holdsNul(program) || std::any_of(arguments.begin(), arguments.end(), holdsNul))
    return systemError(program, EINVAL);
  makeChildrenWaitable();
  Pipe output;
  Pipe errors;
  ChildSetup setup;
  pid_t child = -1;
  int number = streams != Streams::Discarded ? openPipe(output) : 0;
  if (number == 0 && streams == Streams::Captured) number = openPipe(errors);
  if (number == 0) number = setup.openNullDevice(STDIN_FILENO, O_RDONLY);
  if (number == 0) number = setup.connect(STDOUT_FILENO, output);
  if (number == 0) number = setup.connect(STDERR_FILENO, errors);
  if (number == 0) number = setup.closeOthers();
  if (number == 0) number = setup.resetSignals();
  if (number == 0) number = setup.start(program, arguments, child);
  if (number != 0) return systemError(program, number);
  return std::unique_ptr<Process>(
      std::make_unique<LinuxProcess>(child, std::move(output.readEnd), std::move(errors.readEnd)));
}

}  // namespace vantory
