// What is left of a backup that could not be written.
#pragma once

namespace vantory {

class QWBackup;
class TaskReport;

// Removes the folder that the writing made, and lists the library anew: the backup may have been listed before the disk
// refused it. Any thread.
void dropFailedBackup(QWBackup& backup, TaskReport& report);

}  // namespace vantory
