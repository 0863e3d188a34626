// Jobs as agents of the user's login session.
#pragma once

#include <optional>
#include <string>

#include "platform/FileMetadata.h"
#include "platform/FileSystem.h"
#include "platform/JobControl.h"
#include "platform/Users.h"
#include "platform/macos/schedule/LaunchControl.h"

namespace vantory {

// What is loaded is the very property list that describes the job. Its interval begins anew at each login and passes no
// time while the machine sleeps; so a second agent, "LABEL.catchup", looks every hour whether a run is due by the date
// of a stamp, and starts it. A job that succeeds sets the stamp itself. Any thread.
class MacJobControl : public JobControl {
 public:
  // Users, files and metadata outlive it.
  MacJobControl(const Users& users, FileSystem& files, FileMetadata& metadata, LaunchControl control = LaunchControl());

  Status load(const Job& job) override;
  Status unload(const JobName& job) override;
  Status remove(const JobName& job) override;
  std::optional<Timestamp> lastRun(const JobName& job) const override;
  std::optional<Timestamp> lastTry(const JobName& job) const override;
  Status runSucceeded() override;

 private:
  struct Places {
    User user;
    std::string catchUpLabel;
    std::string catchUpFile;
    std::string stamp;
  };

  std::optional<User> user() const;
  Result<Places> placesOf(const JobName& job) const;
  Status write(const Job& job, const Places& places);
  Status replace(const Places& places, const std::string& label, const std::string& file);
  std::optional<Timestamp> dateOf(const std::string& file) const;

  const Users& users_;
  FileSystem& files_;
  FileMetadata& metadata_;
  const LaunchControl control_;
};

}  // namespace vantory
