// The receipt of a running task: what it is about to do and what it did, so that it can be taken back.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "services/TaskReport.h"

namespace vantory {

class AppendFile;
class FolderHold;

// Posted on the main thread when a task has ended that left a receipt.
inline constexpr const char* kReceiptsRefresh = "QWVantoryReceiptsRefresh";

// The code of what cannot be taken back now or later.
inline constexpr std::errc kNeverAgain = std::errc::state_not_recoverable;

// A file below the user's Application Support folder, begun before the first change of the task and ended with it. What
// is about to be done is in the file before it is done; what was done is there by the next such moment. Lines are left
// to the system to be put on disk: they survive the process, not the machine. Belongs to the thread of its report.
class TaskReceipt : public TaskRecord {
 public:
  // Who did what, for whoever reads it.
  struct Task {
    std::string name;  // such as "trash"
    std::vector<std::string> operands = {};
  };

  // Records what the report hears, until it ends. The report outlives it.
  TaskReceipt(TaskReport& report, Task task);
  // Ends it where that was not done.
  ~TaskReceipt() override;
  TaskReceipt(const TaskReceipt&) = delete;
  TaskReceipt& operator=(const TaskReceipt&) = delete;

  // The task takes the one of that receipt back. To be called before anything is planned; begins the file.
  void takesBack(const std::string& receipt);
  void planned(FileAction action, const std::vector<FilePlan>& files, const std::string& item) override;
  void done(FileAction action, const std::string& path, const std::string& item, const std::string& place) override;
  void returned(const std::string& path, const std::string& place) override;
  // The task is over. A receipt that could not be written is remarked in the report.
  void end();
  // Whether there is a file, and something in it that can be taken back.
  bool isOfUse() const { return file_ && canBeTakenBack() && !failure_; }
  // What takes the task back. One that took another back is named, because "--undo" alone passes it over.
  std::string undoCommand() const { return undoes_.empty() ? "vantory --undo" : "vantory --undo " + name_; }

 private:
  void begin();
  Status open();
  void note(FileAction action, const std::string& path);
  bool canBeTakenBack() const { return changes_ > 0 || !made_.empty(); }
  void flush();

  TaskReport& report_;
  const Task task_;
  std::string undoes_;
  std::string name_;  // of the file
  std::unique_ptr<AppendFile> file_;
  std::unique_ptr<FolderHold> hold_;  // on the file: while it exists the task runs
  bool isBegun_ = false;
  bool isEnded_ = false;
  std::string pending_;
  std::size_t size_ = 0;  // of the file, in bytes
  std::optional<Error> failure_;
  std::set<std::pair<FileAction, std::string>> wereSo_;  // what was locked, or not, when that was planned
  std::string made_;                                     // a backup; empty for none, and where it was removed again
  std::size_t changes_ = 0;
  bool removedAnything_ = false;
};

}  // namespace vantory
