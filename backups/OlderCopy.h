// Whether a copy in a backup is damaged, and where else it can be had.
#pragma once

#include <optional>
#include <string>

#include "base/Result.h"

namespace vantory {

// Reads all of what lies at `path`, in the backup. Fails with bad_message where a file is not what its checksum says,
// and with the cause where one cannot be read.
Status checkCopy(const std::string& backup, const std::string& path);

// The newest backup of the library that is older than this one and has the file or folder at `path`, which lies in this
// one, undamaged; none when there is none.
std::optional<std::string> olderBackupWithSoundCopy(const std::string& backup, const std::string& path);

}  // namespace vantory
