// What came of a task, as the person at the window and the log are told of it.
#pragma once

#include <functional>
#include <string>

#include "services/messages/QWAlert.h"

namespace vantory {

class TaskReport;

// Logs what failed and shows it as an alert; blocks until that is answered. Any thread.
void reportFailure(const std::string& failure, const std::string& reason,
                   AlertParent parentWindow = AlertParent::MainWindow);

// Hands the work over to the tasks, which run one after the other on another thread. False, and the person told, where
// the system has no thread to give: then nothing is done. Any thread.
bool startTask(std::function<void()> work);

// The text, and below it what the report names as causes, where it names any.
std::string withCauses(const std::string& text, const TaskReport& report);

// Tells of old automatic backups that could not be removed; nothing where all were.
void reportFailedPruning(const TaskReport& report);

// Tells of files that were not put back; false, and nothing told, where all were. Any thread.
bool reportIncompleteRestore(const TaskReport& report);

}  // namespace vantory
