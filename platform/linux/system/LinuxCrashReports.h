// The memory dumps of systemd-coredump and the reports of apport.
#pragma once

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

}  // namespace vantory
