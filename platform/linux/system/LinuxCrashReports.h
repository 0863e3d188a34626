// The memory dumps of systemd-coredump and the reports of apport.
#pragma once

#include <string>

#include "platform/CrashReports.h"
#include "platform/FileSystem.h"
#include "platform/Users.h"

namespace vantory {

// Any thread.
class LinuxCrashReports : public CrashReports {
 public:
  // Looks below `root`, which is empty but in tests.
  LinuxCrashReports(const FileSystem& files, const Users& users, std::string root = {});

  std::optional<std::string> newestSince(Timestamp moment) const override;

 private:
  const FileSystem& files_;
  const Users& users_;
  const std::string root_;
};

// From now on a crash of this process writes "PROGRAM_DATE_PROCESS.crash" (0600) into the folder, which is made below
// an existing one when it is missing: what crashed, by which signal, and the functions that were being run; nothing of
// what the memory held. The process ends as it would have without, and a memory dump shows the same. Where the stack of
// another thread than the main one is full, there is no report. Called once, on the main thread.
void writeCrashReports(const std::string& folder, const std::string& program);

}  // namespace vantory
