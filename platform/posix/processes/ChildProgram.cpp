// Spawns programs with a clean set of descriptors.
#include "platform/posix/processes/ChildProgram.h"

#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>

#include "platform/posix/files/Descriptor.h"
#include "platform/posix/files/Errors.h"
#include "platform/posix/kernel/Kernel.h"

extern "C" char** environ;  // which not every system's headers declare

namespace vantory {

namespace {

constexpr int kFirstOtherDescriptor = 3;

// As the kernel takes lists: ended by a null pointer, and valid as long as the texts.
std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
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

  // A descriptor among the standard streams is moved out of the way first, because another stream may take its place.
  int connect(int stream, int descriptor, int nullMode) {
    if (descriptor == ChildProgram::kNullDevice)
      return posix_spawn_file_actions_addopen(&actions_, stream, "/dev/null", nullMode, 0);
    if (descriptor < kFirstOtherDescriptor) {
      Descriptor& moved = moved_[static_cast<std::size_t>(stream)];
      moved = Descriptor(fcntl(descriptor, F_DUPFD_CLOEXEC, kFirstOtherDescriptor));
      if (!moved.valid()) return errno;
      descriptor = moved.get();
    }
    return posix_spawn_file_actions_adddup2(&actions_, descriptor, stream);
  }
  int setApart() {
    flags_ |= POSIX_SPAWN_SETSID;
    return posix_spawn_file_actions_addchdir_np(&actions_, "/");
  }
  int closeOthers() { return kernel::closeOthers(actions_, flags_, kFirstOtherDescriptor); }

  // What this process ignores or blocks is no matter of the child's.
  int resetSignals() {
    sigset_t all;
    sigset_t none;
    sigfillset(&all);
    sigemptyset(&none);
    posix_spawnattr_setsigdefault(&attributes_, &all);
    posix_spawnattr_setsigmask(&attributes_, &none);
    return posix_spawnattr_setflags(&attributes_,
                                    static_cast<short>(flags_ | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK));
  }

  int start(const ChildProgram& program, pid_t& child) {
    std::vector<std::string> list{program.path};
    list.insert(list.end(), program.arguments.begin(), program.arguments.end());
    std::vector<std::string> environment = program.environment;
    return posix_spawn(&child, program.path.c_str(), &actions_, &attributes_, pointersTo(list).data(),
                       pointersTo(environment).data());
  }

 private:
  posix_spawn_file_actions_t actions_;
  posix_spawnattr_t attributes_;
  short flags_ = 0;
  std::array<Descriptor, kFirstOtherDescriptor> moved_;
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

std::vector<std::string> cleanEnvironment() {
  const auto fixed = kernel::fixedEnvironment();
  std::vector<std::string> environment(fixed.begin(), fixed.end());
  if (getuid() == 0 || geteuid() == 0) return environment;
  for (const std::string name : kernel::inheritedVariables())
    if (const char* value = std::getenv(name.c_str())) environment.push_back(name + "=" + value);
  return environment;
}

std::vector<std::string> ownEnvironment() {
  std::vector<std::string> environment;
  for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) environment.emplace_back(*entry);
  return environment;
}

Result<pid_t> startChild(const ChildProgram& program) {
  if (!program.path.starts_with('/') || holdsNul(program.path) ||
      std::any_of(program.arguments.begin(), program.arguments.end(), holdsNul))
    return systemError(program.path, EINVAL);
  makeChildrenWaitable();
  ChildSetup setup;
  pid_t child = -1;
  int number = setup.connect(STDIN_FILENO, program.input, O_RDONLY);
  if (number == 0) number = setup.connect(STDOUT_FILENO, program.output, O_WRONLY);
  if (number == 0) number = setup.connect(STDERR_FILENO, program.errors, O_WRONLY);
  if (number == 0 && program.isApart) number = setup.setApart();
  if (number == 0) number = setup.closeOthers();
  if (number == 0) number = setup.resetSignals();
  if (number == 0) number = setup.start(program, child);
  if (number != 0) return systemError(program.path, number);
  return child;
}

}  // namespace vantory
