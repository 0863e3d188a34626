// The work of a few file tools, done by the superuser for a user.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/Result.h"
#include "platform/StandardFolders.h"
#include "platform/Users.h"
#include "platform/posix/rights/AdministratorDisk.h"
#include "platform/posix/rights/MachineWideFiles.h"

namespace vantory {

// Whoever asks may be hostile: only the tools and argument shapes of PrivilegedRunner are known, only items in the
// user's home, in the disk's other folders and among the machine-wide files are touched, and no folder of the standard
// layout is moved, deleted or locked. Does the work itself instead of starting the tools, because a tool would follow
// whatever link the user plants in its way. Any thread.
class AdministratorTools {
 public:
  // Whether somebody still waits for what is being done. Any thread, often.
  using IsWanted = std::function<bool()>;

  // The standard folders outlive the tools. A copy ends, and leaves nothing, when it is not wanted any more.
  AdministratorTools(User user, const StandardFolders& standard, std::unique_ptr<AdministratorDisk> disk,
                     IsWanted isWanted = {});

  static bool knows(const std::string& tool);
  // Does what the tool would do with these arguments, to its end.
  Status perform(const std::string& tool, const std::vector<std::string>& arguments);

 private:
  using Paths = std::vector<std::string>;
  struct Shape;
  static const std::vector<Shape>& shapes();

  Status copy(const Paths& paths);
  Status move(const Paths& paths);
  Status removeItem(const Paths& paths);
  Status makeFolder(const Paths& paths);
  Status touch(const Paths& paths);
  Status lock(const Paths& paths);
  Status unlock(const Paths& paths);
  Status giveJobToSuperuser(const Paths& paths);
  Status publishJob(const Paths& paths);
  Status requireAdministrator(const Paths&);
  Status requireNoAdministrator(const Paths&);

  Status refuseProtected(const std::string& path) const;
  bool isUsersJob(const std::string& path) const;

  const User user_;
  const StandardFolders& standard_;
  const std::unique_ptr<AdministratorDisk> disk_;
  const IsWanted isWanted_;
  FileSystem& files_ = disk_->files();
  FileMetadata& metadata_ = disk_->metadata();
  MachineWideFiles machine_{standard_, *disk_};
};

// A tool and its arguments as a message for who does the superuser's work.
std::vector<std::string> requestFor(const std::string& tool, const std::vector<std::string>& arguments);
// For the system's log: who had what done, and what became of it.
std::string logLineOf(const std::string& user, const std::vector<std::string>& request, const Status& done);

inline constexpr const char* kHelperReady = "ready";  // once, before the first request
inline constexpr const char* kHelperDone = "done";
inline constexpr const char* kHelperFailed = "failed";

}  // namespace vantory
