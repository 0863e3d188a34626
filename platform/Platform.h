// Everything the program asks of the operating system, handed over once at start-up.
#pragma once

namespace vantory {

class Announcements;
class Checksums;
class Clock;
class CrashReports;
class DefaultHandlers;
class DesktopNotifications;
class Documents;
class FileMetadata;
class FileSystem;
class JobControl;
class PrivilegedRunner;
class Processes;
class StandardFolders;
class SystemInfo;
class SystemLog;
class SystemTools;
class TaskClient;
class TrustedFiles;
class Users;
class Workspace;

// The parts belong to whoever made the platform and outlive the Runtime that uses it.
struct Platform {
  Clock& clock;
  Users& users;
  StandardFolders& folders;
  FileSystem& files;  // with the rights of the user whose files are handled
  FileMetadata& metadata;
  Checksums& checksums;
  FileSystem&
      machineFiles;  // for the machine-wide log: as files, or with the superuser's rights when the process has them
  TrustedFiles& trustedFiles;
  Processes& processes;
  PrivilegedRunner& privileged;
  SystemLog& systemLog;
  SystemInfo& system;
  Workspace& workspace;
  Documents& documents;
  DefaultHandlers& defaultHandlers;
  TaskClient& taskClient;
  DesktopNotifications& notifications;
  Announcements& announcements;
  JobControl& jobs;
  SystemTools& tools;
  CrashReports& crashReports;
};

}  // namespace vantory
