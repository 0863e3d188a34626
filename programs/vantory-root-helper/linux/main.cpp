// vantory-root-helper: does the work of a few file tools with the superuser's rights, for the user who had it started
// by pkexec. Takes requests of the process that started it from its standard input until the conversation or that
// process ends, and tells the system log of each.
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

#include "platform/linux/helpers/Channel.h"
#include "platform/linux/rights/LinuxAdministratorDisk.h"
#include "platform/linux/system/LinuxStandardFolders.h"
#include "platform/linux/system/LinuxUsers.h"
#include "platform/posix/processes/ProcessCalls.h"
#include "platform/posix/rights/AdministratorTools.h"
#include "platform/posix/system/PosixSystemLog.h"
#include "programs/vantory-root-helper/linux/Caller.h"
#include "programs/vantory-root-helper/linux/Capabilities.h"

namespace vantory {
namespace {

constexpr int kRefused = 77;

// Nothing of the caller's: no variables, no folder, no mask.
bool leaveSurroundings() {
  ignoreFailedWrites();
  umask(077);
  return clearenv() == 0 && chdir("/") == 0;
}

// What is no message comes from no program of ours and ends the conversation.
void serve(Channel channel, const User& user) {
  const LinuxStandardFolders folders("", true, FileRights::ofUser(user));
  AdministratorTools tools(
      user, folders,
      std::make_unique<LinuxAdministratorDisk>(user, std::vector{*folders.localFolder(StandardFolder::SharedUsers)}),
      [&] { return channel.isOpen(); });
  PosixSystemLog log;
  const std::string name = LinuxUsers().nameOf(user);
  bool open = channel.send({kHelperReady}).ok();
  while (open) {
    const Result<Message> request = channel.receive();
    if (!request) return;
    const Status done = tools.perform(request->front(), {request->begin() + 1, request->end()});
    log.write(logLineOf(name, *request, done));
    open = channel.send({done ? kHelperDone : kHelperFailed}).ok();
  }
}

}  // namespace
}  // namespace vantory

int main(int argc, char**) {
  using namespace vantory;
  if (argc != 1 || getuid() != 0 || geteuid() != 0) return kRefused;
  fillStandardStreams();
  const std::optional<Caller> starter = caller();
  if (!starter || !leaveSurroundings() || !keepOnlyFileCapabilities()) return kRefused;
  Channel channel{Descriptor(STDIN_FILENO)};
  // pkexec became this program, so its parent is who called it. Looked at last: a process that has ended, and whose
  // number may be another's now, is nobody's parent.
  if (!channel.hearOnly(starter->process) || getppid() != starter->process) return kRefused;
  serve(std::move(channel), starter->user);
  return EXIT_SUCCESS;
}
