// Makes the parts of the platform in the order in which they stand on each other.
#include "platform/macos/MacPlatform.h"

#include <unistd.h>

#include <cstdlib>

#include "platform/macos/files/MacChecksums.h"
#include "platform/macos/files/MacFileMetadata.h"
#include "platform/macos/rights/MacPrivilegedRunner.h"
#include "platform/macos/rights/MachineLog.h"
#include "platform/macos/schedule/MacJobControl.h"
#include "platform/macos/session/MacDesktop.h"
#include "platform/macos/session/UserFiles.h"
#include "platform/macos/system/MacCrashReports.h"
#include "platform/macos/system/MacStandardFolders.h"
#include "platform/macos/system/MacSystemTools.h"
#include "platform/macos/system/MacUsers.h"
#include "platform/posix/processes/PosixClock.h"
#include "platform/posix/processes/PosixProcesses.h"
#include "platform/posix/processes/ProcessCalls.h"
#include "platform/posix/progress/ShownDisk.h"
#include "platform/posix/system/PosixSystemInfo.h"
#include "platform/posix/system/PosixSystemLog.h"
#include "platform/posix/system/PosixTrustedFiles.h"

namespace vantory {
namespace {

// An executable that was given somebody else's identity does not use it. Where the system gave it the superuser's for a
// right of its starter's, answers that right.
darwin::AuthorizationHandle dropBorrowedIdentity() {
  if (geteuid() == getuid() && getegid() == getgid()) return nullptr;
  const darwin::AuthorizationHandle right = geteuid() == 0 ? rightHandedDown() : nullptr;
  if (setregid(getgid(), getgid()) != 0 || setreuid(getuid(), getuid()) != 0) std::abort();
  if (geteuid() != getuid() || getegid() != getgid()) std::abort();
  return right;
}

}  // namespace

struct MacPlatform::Parts {
  Parts(std::vector<std::string> arguments, std::optional<ConsoleUserProcess> become,
        darwin::AuthorizationHandle handedDown, std::string startedProgram)
      : consoleUser(std::move(become)), right(handedDown), system(std::move(arguments), std::move(startedProgram)) {}

  std::unique_ptr<PrivilegedRunner> privilegedRunner() {
    if (consoleUser) return std::make_unique<RootRunner>(*consoleUser->superuser);
    return std::make_unique<MacPrivilegedRunner>(systemLog, darwin::authorizationCalls, right);
  }
  std::unique_ptr<FileSystem> filesOfMachine() const {
    if (consoleUser) return std::make_unique<MachineLogFiles>(folders, *consoleUser->superuser);
    return std::make_unique<MacFileSystem>();
  }

  const std::optional<ConsoleUserProcess> consoleUser;
  const darwin::AuthorizationHandle right;
  // In this order: each is made of those above it.
  PosixSystemLog systemLog;
  PosixClock clock;
  MacUsers users = consoleUser ? MacUsers(consoleUser->user) : MacUsers();
  MacStandardFolders folders;
  PosixSystemInfo system;
  PreferencesDaemon preferences{users};
  UserFiles files{preferences};
  MacFileMetadata metadata;
  MacChecksums checksums;
  PosixTrustedFiles trustedFiles;
  std::unique_ptr<FileSystem> machineFiles = filesOfMachine();
  std::unique_ptr<PrivilegedRunner> privileged = privilegedRunner();
  PosixProcesses processes;
  MacWorkspace workspace{files, users, preferences};
  MacDocuments documents;
  MacDefaultHandlers defaultHandlers;
  MacTaskClient taskClient;
  MacDesktopNotifications notifications;
  MacAnnouncements announcements;
  MacJobControl jobs{users, files, metadata};
  MacSystemTools tools;
  MacCrashReports crashReports{files, users, folders};
  ShownDisk disk{files, metadata, checksums};
};

MacPlatform::MacPlatform(std::vector<std::string> arguments, Progress progress,
                         std::optional<ConsoleUserProcess> consoleUser, std::string startedProgram) {
  const darwin::AuthorizationHandle right = dropBorrowedIdentity();
  fillStandardStreams();
  ignoreFailedWrites();
  parts_ = std::make_unique<Parts>(std::move(arguments), std::move(consoleUser), right, std::move(startedProgram));
  Parts& p = *parts_;
  if (progress == Progress::Shown) p.disk.show();
  // The log makes room for its own lines.
  if (ProgressLine* line = p.disk.line()) p.systemLog.setBeforeLine([line] { line->clear(); });
  platform_ = std::make_unique<Platform>(Platform{
      .clock = p.clock,
      .users = p.users,
      .folders = p.folders,
      .files = p.disk.files(),
      .metadata = p.disk.metadata(),
      .checksums = p.disk.checksums(),
      .machineFiles = *p.machineFiles,
      .trustedFiles = p.trustedFiles,
      .processes = p.processes,
      .privileged = *p.privileged,
      .systemLog = p.systemLog,
      .system = p.system,
      .workspace = p.workspace,
      .documents = p.documents,
      .defaultHandlers = p.defaultHandlers,
      .taskClient = p.taskClient,
      .notifications = p.notifications,
      .announcements = p.announcements,
      .jobs = p.jobs,
      .tools = p.tools,
      .crashReports = p.crashReports,
  });
}

MacPlatform::~MacPlatform() = default;

ProgressLine* MacPlatform::progressLine() const {
  return parts_->disk.line();
}

}  // namespace vantory
