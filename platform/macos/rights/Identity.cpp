// Drops what was borrowed; forks, and looks after the child.
#include "platform/macos/rights/Identity.h"

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <utility>

#include "platform/macos/rights/MacPrivilegedRunner.h"
#include "platform/macos/rights/RootService.h"
#include "platform/macos/system/MacUsers.h"
#include "platform/posix/files/Errors.h"
#include "platform/posix/homes/HomeOwner.h"
#include "platform/posix/kernel/Kernel.h"
#include "platform/posix/processes/ProcessCalls.h"

namespace vantory {

namespace {

constexpr int kHandedOn[] = {SIGTERM, SIGINT, SIGHUP, SIGQUIT};
// The child while it is there, where the handler finds it.
volatile std::sig_atomic_t child = 0;
volatile std::sig_atomic_t conversation = -1;

// The handlers: only few calls are allowed here.
void handOn(int signal) {
  if (child > 0) kill(static_cast<pid_t>(child), signal);
}

// Whoever the child may have given its end to is not served on.
void endConversation(int) {
  shutdown(conversation, SHUT_RDWR);
}

void handle(int signal, void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART | SA_NOCLDSTOP;
  sigaction(signal, &action, nullptr);
}

// The console user, whose home must be that user's own: another's would open that one's files.
Result<HomeOwner> ownerAtConsole() {
  const std::optional<User> user = MacUsers().consoleUser();
  if (!user)
    return Error{
        std::errc::no_such_process,
        "Nobody is logged in at the console - nothing was done. With \"--home /Users/NAME\" before the task it "
        "works in that home."};
  Result<HomeOwner> owner = ownerOfHome(user->home);
  if (owner && owner->user.id != user->id)
    return Error{std::errc::operation_not_permitted, user->home + " belongs to another user - nothing was done."};
  return owner;
}

// The child gets no signal of the terminal, which is not its own any more.
[[noreturn]] void lookAfter(pid_t process, StreamChannel channel, const HomeOwner& owner) {
  child = process;
  for (const int signal : kHandedOn) handle(signal, handOn);
  if (leaveUsersSurroundings())
    serveAsSuperuser(channel, owner.user, owner.name, RootWork::ToolsAndLog);
  else
    kill(process, SIGTERM);
  kernel::awaitEnd(process);
  child = 0;  // the number may be another's as soon as it is collected
  int status = 0;
  uninterrupted([&] { return waitpid(process, &status, 0); });
  _exit(endOf(status));
}

}  // namespace

MacIdentity ownIdentity() {
  if (geteuid() == getuid() && getegid() == getgid()) return {};
  MacIdentity identity{.handedDown = geteuid() == 0 ? rightHandedDown() : nullptr};
  if (setregid(getgid(), getgid()) != 0 || setreuid(getuid(), getuid()) != 0) std::abort();
  if (geteuid() != getuid() || getegid() != getgid()) std::abort();
  return identity;
}

Result<MacIdentity> becomeConsoleUser() {
  fillStandardStreams();
  const Result<HomeOwner> owner = ownerAtConsole();
  if (!owner) return owner.error();
  kernel::closeFrom(STDERR_FILENO + 1);  // what the superuser had open is not for the user
  Result<StreamChannel::Ends> ends = StreamChannel::pair();
  if (!ends) return ends.error();
  conversation = ends->own.descriptor();
  handle(SIGCHLD, endConversation);
  const pid_t process = fork();
  if (process < 0) return systemError("fork");
  if (process > 0) {
    ends->other.close();
    lookAfter(process, std::move(ends->own), *owner);
  }
  handle(SIGCHLD, SIG_DFL);
  ends->own.close();
  setpgid(0, 0);
  if (const Status become = becomeOwner(*owner); !become) return become.error();
  return MacIdentity{.consoleUser = owner->user,
                     .superuser = std::make_shared<RootConversation>(std::move(ends->other))};
}

}  // namespace vantory
