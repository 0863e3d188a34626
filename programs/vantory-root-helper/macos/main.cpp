// vantory-root-helper: does the work of a few file tools with the superuser's rights, for the user who had it started
// by the system's service for that. Takes requests from its standard input, which goes both ways, until the
// conversation ends, and tells the system log of each.
#include <grp.h>
#include <unistd.h>

#include <cstdlib>
#include <optional>

#include "platform/macos/darwin/Darwin.h"
#include "platform/macos/rights/RootService.h"
#include "platform/posix/kernel/Kernel.h"
#include "platform/posix/processes/ProcessCalls.h"
#include "platform/posix/rights/AdministratorTools.h"
#include "programs/vantory-root-helper/macos/Caller.h"

namespace vantory {
namespace {

constexpr int kRefused = 77;

// With no group of the caller's.
bool becomeSuperuser() {
  return setgroups(0, nullptr) == 0 && setgid(0) == 0 && setuid(0) == 0 && getuid() == 0 && geteuid() == 0 &&
         getgid() == 0 && getegid() == 0;
}

}  // namespace
}  // namespace vantory

int main(int argc, char**) {
  using namespace vantory;
  if (argc != 1 || geteuid() != 0) return kRefused;
  fillStandardStreams();
  const std::optional<HomeOwner> starter = caller();
  if (!starter || !becomeSuperuser() || !leaveUsersSurroundings(STDIN_FILENO)) return kRefused;
  kernel::closeFrom(STDERR_FILENO + 1);
  (void)setsid();  // the terminal's keys would end the work halfway
  if (!darwin::keepOnlyFileWork()) return kRefused;
  StreamChannel channel{Descriptor(STDIN_FILENO)};
  if (!channel.send({kHelperReady})) return kRefused;
  serveAsSuperuser(channel, starter->user, starter->name, RootWork::Tools);
  return EXIT_SUCCESS;
}
