// The program with a Mac's disk, folders and users on emulated calls, for the tests of the commands. What the second
// platform does not have yet is Linux's.

#include <iostream>
#include <memory>
#include <optional>

#include "platform/Platform.h"
#include "platform/linux/LinuxPlatform.h"
#include "platform/macos/files/MacChecksums.h"
#include "platform/macos/files/MacFileMetadata.h"
#include "platform/macos/files/MacFileSystem.h"
#include "platform/macos/system/MacCrashReports.h"
#include "platform/macos/system/MacStandardFolders.h"
#include "platform/macos/system/MacSystemTools.h"
#include "platform/macos/system/MacUsers.h"
#include "platform/posix/processes/ProcessCalls.h"
#include "platform/posix/progress/ProgressLine.h"
#include "platform/posix/progress/WatchedFiles.h"
#include "platform/posix/system/PosixSystemLog.h"
#include "services/Runtime.h"
#include "services/threads/MainThread.h"
#include "tasks/Program.h"

int main(int argumentCount, char** arguments) {
  using namespace vantory;
  LinuxPlatform others({arguments, arguments + argumentCount});
  const Platform& rest = others.platform();
  PosixSystemLog systemLog;
  MacUsers users;
  MacStandardFolders folders;
  MacFileSystem files;
  MacFileMetadata metadata;
  MacChecksums checksums;
  MacSystemTools tools;
  MacCrashReports crashReports(files, users, folders);
  // As the Linux platform does.
  const std::unique_ptr<ProgressLine> progress = ProgressLine::onStandardError();
  std::optional<WatchedFileSystem> watched;
  std::optional<WatchedFileMetadata> watchedMetadata;
  std::optional<BeforeOutput> beforeOutput, beforeErrors;
  if (progress) {
    watched.emplace(files, *progress);
    watchedMetadata.emplace(metadata, *progress);
    systemLog.setBeforeLine([&] { progress->clear(); });
    beforeOutput.emplace(std::cout, [&] { progress->end(); });
    beforeErrors.emplace(std::cerr, [&] { progress->clear(); });
  }
  FileSystem& shownFiles = watched ? static_cast<FileSystem&>(*watched) : files;
  FileMetadata& shownMetadata = watchedMetadata ? static_cast<FileMetadata&>(*watchedMetadata) : metadata;
  Platform platform{
      .clock = rest.clock,
      .users = users,
      .folders = folders,
      .files = shownFiles,
      .metadata = shownMetadata,
      .checksums = checksums,
      .machineFiles = files,
      .trustedFiles = rest.trustedFiles,
      .processes = rest.processes,
      .privileged = rest.privileged,
      .systemLog = systemLog,
      .system = rest.system,
      .workspace = rest.workspace,
      .documents = rest.documents,
      .defaultHandlers = rest.defaultHandlers,
      .taskClient = rest.taskClient,
      .notifications = rest.notifications,
      .announcements = rest.announcements,
      .jobs = rest.jobs,
      .tools = tools,
      .crashReports = crashReports,
  };
  Runtime runtime(platform);
  runtime.shared<MainThread>();
  return runProgram(std::cout, std::cerr, replaceProgram);
}
