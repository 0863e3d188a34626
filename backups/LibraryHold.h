// Keeps two processes from changing one backup at the same time.
#pragma once

#include <memory>
#include <string>

#include "platform/FileSystem.h"

namespace vantory {

class TaskReport;

// Takes hold of a backup's folder or of the library's, waiting at most two seconds for another process that works there
// (timed_out).
Result<std::unique_ptr<FolderHold>> holdBackupFolder(const std::string& folder);

// Moves a backup, or whatever else bears its name, to the Trash, but not from under a process that writes it. Answers
// where it lies there, nothing where nothing was in the way; a failure is in the log. To be called with the folder
// above held.
Result<std::string> clearBackupPath(const std::string& path);

// Notes what was moved to the Trash for good; nothing where the place is empty.
void noteCleared(const std::string& path, const std::string& place, TaskReport& report);

}  // namespace vantory
