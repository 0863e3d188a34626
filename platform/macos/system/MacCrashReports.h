// The reports that the system writes of programs that crashed.
#pragma once

#include "platform/CrashReports.h"
#include "platform/FileSystem.h"
#include "platform/StandardFolders.h"
#include "platform/Users.h"

namespace vantory {

// Any thread. The system may take a minute to write a report.
class MacCrashReports : public CrashReports {
 public:
  MacCrashReports(const FileSystem& files, const Users& users, const StandardFolders& folders)
      : files_(files), users_(users), folders_(folders) {}

  std::optional<std::string> newestSince(Timestamp moment) const override;

 private:
  const FileSystem& files_;
  const Users& users_;
  const StandardFolders& folders_;
};

}  // namespace vantory
