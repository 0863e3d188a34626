// Makes the parts of the platform in the order in which they stand on each other.
#include "platform/linux/LinuxPlatform.h"

#include <unistd.h>

#include <cstdlib>

#include "platform/linux/files/LinuxChecksums.h"
#include "platform/linux/files/LinuxFileMetadata.h"
#include "platform/linux/files/LinuxFileSystem.h"
#include "platform/linux/helpers/DesktopHelper.h"
#include "platform/linux/rights/LinuxAdministratorDisk.h"
#include "platform/linux/rights/PkexecRunner.h"
#include "platform/linux/schedule/LinuxJobControl.h"
#include "platform/linux/session/DesktopSession.h"
#include "platform/linux/session/LinuxDesktop.h"
#include "platform/linux/system/LinuxCrashReports.h"
#include "platform/linux/system/LinuxStandardFolders.h"
#include "platform/linux/system/LinuxSystemTools.h"
#include "platform/linux/system/LinuxUsers.h"
#include "platform/posix/files/UntrustedMode.h"
#include "platform/posix/processes/PosixClock.h"
#include "platform/posix/processes/PosixProcesses.h"
#include "platform/posix/processes/ProcessCalls.h"
#include "platform/posix/progress/ShownDisk.h"
#include "platform/posix/rights/SuperuserRunner.h"
#include "platform/posix/system/PosixSystemInfo.h"
#include "platform/posix/system/PosixSystemLog.h"
#include "platform/posix/system/PosixTrustedFiles.h"

namespace vantory {
namespace {

// An executable that was given somebody else's identity does not use it. Answers whether it was.
bool dropBorrowedIdentity() {
  if (geteuid() == getuid() && getegid() == getgid()) return false;
  if (setresgid(getgid(), getgid(), getgid()) != 0 || setresuid(getuid(), getuid(), getuid()) != 0) std::abort();
  return true;
}

}  // namespace

struct LinuxPlatform::Parts {
  Parts(std::vector<std::string> arguments, std::string startedProgram)
      : system(std::move(arguments), std::move(startedProgram)) {}

  // The log makes room for its own lines.
  void showProgress() {
    disk.show();
    if (ProgressLine* line = disk.line()) systemLog.setBeforeLine([line] { line->clear(); });
  }

  // With nobody at the console they serve nowhere.
  FileRights rightsForUser() const {
    if (!users.isSuperuser()) return FileRights::own();
    const auto user = users.consoleUser();
    return user ? FileRights::ofUser(*user) : FileRights::administrator({}, {});
  }

  // Beyond the home the superuser's serve in the folders that all users share, and for the machine's logs; with nobody
  // at the console nowhere.
  std::unique_ptr<PrivilegedRunner> privilegedRunner() const {
    if (!users.isSuperuser()) return std::make_unique<PkexecRunner>();
    const auto user = users.consoleUser();
    if (!user) return std::make_unique<SuperuserRunner>(nullptr);
    auto disk = std::make_unique<LinuxAdministratorDisk>(
        *user, std::vector{*folders.localFolder(StandardFolder::SharedUsers),
                           *folders.localFolder(StandardFolder::Library) + "/Logs"});
    return std::make_unique<SuperuserRunner>(std::make_unique<AdministratorTools>(*user, folders, std::move(disk)));
  }

  // In this order: each is made of those above it.
  PosixSystemLog systemLog;
  PosixClock clock;
  LinuxUsers users;
  LinuxStandardFolders folders{"", users.isSuperuser(), rightsForUser()};
  PosixSystemInfo system;
  LinuxFileSystem files{rightsForUser()};
  LinuxFileMetadata metadata{rightsForUser()};
  LinuxChecksums checksums{rightsForUser()};
  LinuxFileSystem machineFiles{users.isSuperuser() ? FileRights::machine() : FileRights::own()};
  PosixTrustedFiles trustedFiles;
  std::unique_ptr<PrivilegedRunner> privileged = privilegedRunner();
  PosixProcesses processes;
  DesktopHelper desktop{[this] { return desktopHelperProgram(users); }};
  LinuxWorkspace workspace{desktop, users};
  LinuxDocuments documents{desktop};
  LinuxDefaultHandlers defaultHandlers{users};
  LinuxTaskClient taskClient{desktop, users};
  LinuxDesktopNotifications notifications{desktop, users};
  LinuxAnnouncements announcements{desktop, users};
  LinuxJobControl jobs{users, files, metadata, UserManager(users)};
  LinuxSystemTools tools;
  LinuxCrashReports crashReports{files, users};
  ShownDisk disk{files, metadata, checksums};
};

LinuxPlatform::LinuxPlatform(std::vector<std::string> arguments, std::string startedProgram, Progress progress) {
  const bool wasHandedDown = dropBorrowedIdentity();
  fillStandardStreams();
  ignoreFailedWrites();
  learnProcessMask();
  parts_ = std::make_unique<Parts>(std::move(arguments), std::move(startedProgram));
  Parts& p = *parts_;
  if (progress == Progress::Shown) p.showProgress();
  if (wasHandedDown) p.systemLog.write("Unable to adopt the rights that were handed down: this system has no way to");
  platform_ = std::make_unique<Platform>(Platform{
      .clock = p.clock,
      .users = p.users,
      .folders = p.folders,
      .files = p.disk.files(),
      .metadata = p.disk.metadata(),
      .checksums = p.disk.checksums(),
      .machineFiles = p.machineFiles,
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

LinuxPlatform::~LinuxPlatform() = default;

ProgressLine* LinuxPlatform::progressLine() const {
  return parts_->disk.line();
}

}  // namespace vantory
