// Jobs as timers of the user's service manager, systemd.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/JobControl.h"
#include "platform/linux/schedule/UserManager.h"

namespace vantory {

class FileMetadata;
class FileSystem;
class Users;

// A loaded job is a service and a timer among the user's own units, and a stamp with the date of its last run among the
// user's state files. Jobs of the machine are never loaded. Not for two threads at once.
class LinuxJobControl : public JobControl {
 public:
  // The services handle the user's files with the user's rights, and outlive this.
  LinuxJobControl(const Users& users, FileSystem& files, FileMetadata& metadata, UserManager manager);

  Status load(const Job& job) override;
  Status unload(const JobName& job) override;
  Status remove(const JobName& job) override;
  std::optional<Timestamp> lastRun(const JobName& job) const override;
  std::optional<Timestamp> lastTry(const JobName& job) const override;
  Status runSucceeded() override;

 private:
  std::optional<Timestamp> dateOf(const std::string& file) const;
  struct Places {
    std::string timerName;
    std::string service;
    std::string timer;
    std::string stamp;
    std::string enabling;      // the link by which the timer starts with the user's service manager
    std::string managerStamp;  // where that keeps the timer's last tick
  };

  Result<Places> placesOf(const JobName& job) const;
  Status write(const Job& job, const Places& places);
  Status start(const Places& places);

  const Users& users_;
  FileSystem& files_;
  FileMetadata& metadata_;
  const UserManager manager_;
};

}  // namespace vantory
