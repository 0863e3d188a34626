// Where a backup lies and how paths are named in it: all that a preference item knows of backups.
#pragma once

#include <optional>
#include <string>

#include "base/Result.h"

namespace vantory {

class BackupPlace {
 public:
  virtual ~BackupPlace() = default;
  // The backup folder, without a slash at its end.
  virtual std::string path() const = 0;
  // The path with the user's home folder written as "/Users/user".
  virtual std::string safeUserPath(const std::string& path) const = 0;
  // Reads all of what lies at this path, below path(). Fails with bad_message where it is known to be damaged, and with
  // the cause where it cannot be read.
  virtual Status checkCopy(const std::string&) const { return {}; }
  // Whether other files are known to be in it than were backed up.
  virtual bool holdsOtherFiles() const { return false; }
  // The next older backup that has what lies at this path, below path(), undamaged; none where none is known.
  virtual std::optional<std::string> olderWithSoundCopy(const std::string&) const { return std::nullopt; }
};

// The name of every user's home folder inside a backup.
inline constexpr const char* kHomePlaceholder = "/Users/user";

// Where a path below the backup's folder belongs on the live system; none when that is no plain absolute path, or lies
// in a home and there is no user.
std::optional<std::string> livePathOf(const std::string& path, const std::string& backupPath);

}  // namespace vantory
