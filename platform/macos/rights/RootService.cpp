// Takes requests, one after the other.
#include "platform/macos/rights/RootService.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <memory>
#include <vector>

#include "platform/macos/rights/MacAdministratorDisk.h"
#include "platform/macos/rights/MachineLog.h"
#include "platform/macos/rights/RootConversation.h"
#include "platform/macos/system/MacStandardFolders.h"
#include "platform/posix/kernel/Kernel.h"
#include "platform/posix/processes/ProcessCalls.h"
#include "platform/posix/rights/AdministratorTools.h"
#include "platform/posix/system/PosixSystemLog.h"

extern "C" char** environ;  // which not every system's headers declare

namespace vantory {

void serveAsSuperuser(StreamChannel& channel, const User& user, const std::string& userName, RootWork work) {
  const MacStandardFolders folders;
  AdministratorTools tools(
      user, folders,
      std::make_unique<MacAdministratorDisk>(user, std::vector{*folders.localFolder(StandardFolder::SharedUsers)}),
      [&] { return channel.isOpen(); });
  MachineLog machineLog(folders);
  PosixSystemLog log;
  for (bool isOpen = true; isOpen;) {
    const Result<Message> request = channel.receive();
    if (!request) return;
    Descriptor file;
    Status done;
    if (work == RootWork::ToolsAndLog && request->front() == kMachineLog) {
      done = machineLog.perform(*request, file);
    } else {
      done = tools.perform(request->front(), {request->begin() + 1, request->end()});
      log.write(logLineOf(userName, *request, done));
    }
    isOpen = channel.send(answerFor(done), file.get()).ok();
  }
}

bool leaveUsersSurroundings(int kept) {
  static char* none[] = {nullptr};
  environ = none;
  ignoreFailedWrites();
  umask(077);
  constexpr rlimit kNoCore{0, 0}, kNoLimit{RLIM_INFINITY, RLIM_INFINITY}, kManyFiles{1024, 1024};
  const Descriptor null(open("/dev/null", O_RDWR));
  if (!null.valid() || chdir("/") != 0 || setrlimit(RLIMIT_CORE, &kNoCore) != 0) return false;
  // The user's could end the work halfway.
  for (const auto resource : {RLIMIT_CPU, RLIMIT_FSIZE, RLIMIT_DATA, RLIMIT_AS})
    if (setrlimit(resource, &kNoLimit) != 0) return false;
  if (setrlimit(RLIMIT_NOFILE, &kManyFiles) != 0) return false;
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    if (stream != kept && dup2(null.get(), stream) < 0) return false;
  return true;
}

}  // namespace vantory
