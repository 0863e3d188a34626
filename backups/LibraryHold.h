// Keeps two processes from changing one backup at the same time.
#pragma once

#include <memory>
#include <string>

#include "platform/FileSystem.h"

namespace vantory {

// Takes hold of a backup's folder or of the library's, waiting at most two seconds for another process that works there
// (timed_out).
Result<std::unique_ptr<FolderHold>> holdBackupFolder(const std::string& folder);

// Moves a backup, or whatever else bears its name, to the Trash, but not from under a process that writes it. True when
// nothing stands at the path any more; the log says why not. To be called with the folder above held.
bool clearBackupPath(const std::string& path);

}  // namespace vantory
