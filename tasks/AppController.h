// The controller that every task runs under.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vantory {

// A failure that ends a command, as each place that is told of it puts it.
struct TaskFailure {
  std::string text;                         // to the task client
  std::optional<std::string> log = {};      // to the log, where it is told otherwise than by `text`
  std::string title;                        // of the desktop notification
  std::string description;                  // its text
  std::optional<std::string> console = {};  // to the system log; none for no line there
};

// Whether the argument, the process's last, asks for desktop notifications: "-hotkey" or "-task".
bool asksForNotifications(std::string_view argument);

class AppController {
 public:
  static constexpr const char* kTaskLogName = "Vantory.task";

  // Prepares the process for a task without windows: records its start, and opens a new task log.
  void initWithoutGUI();
  // The same for a task whose deeds are only recorded: no start is told of, and no log kept.
  void initForDryRun();

  // Shows a desktop notification when the process's last argument is "-hotkey" or "-task", else does nothing.
  void postGrowlNotification(const std::string& title, const std::string& description) const;

  // Tells the task client, the log, the person and the system log of the failure.
  void reportFailure(const TaskFailure& failure) const;
};

}  // namespace vantory
