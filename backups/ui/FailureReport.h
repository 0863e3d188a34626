// What came of a task, as the person at the window and the log are told of it.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "services/messages/QWAlert.h"

namespace vantory {

class TaskReport;

// Logs what failed and shows it as an alert; blocks until that is answered. Any thread.
void reportFailure(const std::string& failure, const std::string& reason,
                   AlertParent parentWindow = AlertParent::MainWindow);

// Whether the person at a result's list is offered to have the task done once more.
enum class Retry { Offered, None };

// Shows what was done otherwise than it was asked for, if anything.
void tellNotices(const TaskReport& report);

// Logs that a task was not done whole, and shows what the report has of files and applications that it left out: what
// happened to each, why, and what can be done about it. Blocks until that is answered; true where the person wants the
// task done once more. Any thread.
bool reportResult(const std::string& failure, const std::string& reason, const TaskReport& report,
                  Retry retry = Retry::Offered);

// The same for what wrote into a backup: where nothing failed it tells what was left out on purpose, such as a link,
// which another try would leave out too.
bool reportWriting(const std::string& failure, const std::string& reason, const TaskReport& report);

// Hands the work over to the tasks, which run one after the other on another thread. False, and the person told, where
// the system has no thread to give: then nothing is done. Any thread.
bool startTask(std::function<void()> work);

// The text, and below it what the report names as causes, where it names any.
std::string withCauses(const std::string& text, const TaskReport& report);

// Tells of old automatic backups that could not be removed; nothing where all were.
void reportFailedPruning(const TaskReport& report);

// Tells what was done otherwise than asked for, then of files that were not put back, and answers whether the person
// wants it tried again; none, and nothing told, where all were. Any thread.
std::optional<bool> reportIncompleteRestore(const TaskReport& report, Retry retry = Retry::None);

}  // namespace vantory
