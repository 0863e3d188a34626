// Makes the parts of the platform in the order in which they stand on each other.
#include "platform/macos/MacPlatform.h"

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
#include "platform/posix/files/UntrustedMode.h"
#include "platform/posix/processes/PosixClock.h"
#include "platform/posix/processes/PosixProcesses.h"
#include "platform/posix/processes/ProcessCalls.h"
#include "platform/posix/progress/ShownDisk.h"
#include "platform/posix/system/PosixSystemInfo.h"
#include "platform/posix/system/PosixSystemLog.h"
#include "platform/posix/system/PosixTrustedFiles.h"

namespace vantory {

struct MacPlatform::Parts {
  Parts(std::vector<std::string> arguments, MacIdentity identity, std::string startedProgram)
      : identity(std::move(identity)), system(std::move(arguments), std::move(startedProgram)) {}

  std::unique_ptr<PrivilegedRunner> privilegedRunner() {
    if (identity.superuser) return std::make_unique<RootRunner>(*identity.superuser);
    return std::make_unique<MacPrivilegedRunner>(systemLog, darwin::authorizationCalls, identity.handedDown);
  }
  std::unique_ptr<FileSystem> filesOfMachine() const {
    if (identity.superuser) return std::make_unique<MachineLogFiles>(folders, *identity.superuser);
    return std::make_unique<MacFileSystem>();
  }

  const MacIdentity identity;
  // In this order: each is made of those above it.
  PosixSystemLog systemLog;
  PosixClock clock;
  MacUsers users{identity.consoleUser};
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

MacPlatform::MacPlatform(std::vector<std::string> arguments, Progress progress, MacIdentity identity,
                         std::string startedProgram) {
  fillStandardStreams();
  ignoreFailedWrites();
  learnProcessMask();
  parts_ = std::make_unique<Parts>(std::move(arguments), std::move(identity), std::move(startedProgram));
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
