// Where else a copy can be had that is damaged in one backup.
#pragma once

#include <optional>
#include <string>

namespace vantory {

// The newest backup of the library that is older than this one and has the file or folder at `path`, which lies in this
// one, undamaged; none when there is none.
std::optional<std::string> olderBackupWithSoundCopy(const std::string& backup, const std::string& path);

}  // namespace vantory
