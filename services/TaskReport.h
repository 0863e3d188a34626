// What a task did to which file, what it did not do, and why.
#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Result.h"

namespace vantory {

enum class FileAction {
  Trash,
  Restore,
  Copy,
  Lock,
  Unlock,
  Move,
  Remove,
  Write,
  List,
  Sync,
  PutBack,
  Create,
  Replace,
  Default
};

// As scripts read it, such as "trash".
const char* nameOf(FileAction action);
// The reverse; none for any other word.
std::optional<FileAction> actionNamed(std::string_view name);

constexpr bool isOfLocks(FileAction action) {
  return action == FileAction::Lock || action == FileAction::Unlock;
}

// One file, or folder, of a task.
struct FileReport {
  enum class Outcome { Done, Skipped, Failed };

  FileAction action = FileAction::Copy;
  std::string path;        // what the task was to work on
  std::string item = {};   // the key of the preference item it belongs to; empty for none
  std::string place = {};  // where it, or its copy, lies now; empty where that is nowhere or not known
  Outcome outcome = Outcome::Done;
  std::shared_ptr<const Error> cause = {};  // why it was skipped or failed; null when done

  // It is there and was passed over, such as a link, a pipe or what another process holds. A file that was as wanted
  // already has no code.
  bool wasLeftOut() const { return outcome == Outcome::Skipped && cause->code != std::errc() && !meansMissing(*cause); }
};

// What is about to be done to a file or folder.
struct FilePlan {
  std::string path;
  std::string source = {};  // what is to be put there; empty for none
  std::string place = {};   // where it is to go; empty where that shows only afterwards
};

// Hears of a task's changes as they happen, so that they can be taken back, also after the process was killed.
class TaskRecord {
 public:
  virtual ~TaskRecord() = default;
  // Called before the first of these is touched.
  virtual void planned(FileAction action, const std::vector<FilePlan>& files, const std::string& item) = 0;
  // Called right after.
  virtual void done(FileAction action, const std::string& path, const std::string& item, const std::string& place) = 0;
  // Called right after what went to that place of the Trash has come back to its path.
  virtual void returned(const std::string& path, const std::string& place) = 0;
};

// Filled by whatever a task calls, read by whoever tells of the task. Belongs to one task, and to one thread at a time.
class TaskReport {
 public:
  // An application whose files were left alone.
  struct PassedOver {
    std::string application;
    std::string reason;  // a sentence
  };

  // An operand, or a part of one, that nothing was done for.
  struct UnusedOperand {
    std::string operand;
    std::string reason;        // a sentence
    std::string nearest = {};  // what may have been meant; empty where nothing comes near
  };

  void done(FileAction action, const std::string& path, const std::string& item = {}, const std::string& place = {});
  // The file is as it was, on purpose.
  void skipped(FileAction action, const std::string& path, Error cause, const std::string& item = {});
  void failed(FileAction action, const std::string& path, Error cause, const std::string& item = {});
  // As done() or failed(), by how the operation ended.
  void add(FileAction action, const std::string& path, const Status& status, const std::string& item = {},
           const std::string& place = {});
  void passedOver(std::string application, std::string reason);
  // What another report has of files, remarks and notices.
  void take(TaskReport other);
  // The person ended the task before it was through.
  void cancelled() { isCancelled_ = true; }
  // A sentence about something beside the task itself that went wrong, such as an application that did not start again.
  void remark(std::string sentence) { remarks_.push_back(std::move(sentence)); }

  // What is about to be done, for the record alone. Whoever changes files says it first, for a few or for many at once.
  void planned(FileAction action, const std::vector<FilePlan>& files, const std::string& item = {});
  void planned(FileAction action, const std::vector<std::string>& paths, const std::string& item = {});
  // What was done on the way and is nothing to tell a person, for the record alone.
  void noted(FileAction action, const std::string& path, const std::string& item = {}, const std::string& place = {});
  // What the task moved to that place of the Trash lies at its path again: nothing was done to it.
  void returned(const std::string& path, const std::string& place);
  // Hears of everything from now on; outlives the report. Null for nobody.
  void setRecord(TaskRecord* record) { record_ = record; }

  // What a person reads where all was done; empty where they have read it already.
  void summarize(std::string sentence) { summary_ = std::move(sentence); }
  const std::optional<std::string>& summary() const { return summary_; }
  // Why the task could not be begun at all.
  void refuse(std::string reason) { refusal_ = std::move(reason); }
  // It was refused because there is nothing that it could be done to.
  void hadNothingToDo() { hadNothingToDo_ = true; }
  void unused(UnusedOperand operand) { unusedOperands_.push_back(std::move(operand)); }
  // A sentence about what was done otherwise than it was asked for, such as under another name.
  void notice(std::string sentence) { notices_.push_back(std::move(sentence)); }

  const std::deque<FileReport>& files() const { return files_; }
  const std::vector<PassedOver>& passedOver() const { return passedOver_; }
  const std::vector<std::string>& remarks() const { return remarks_; }
  const std::vector<UnusedOperand>& unusedOperands() const { return unusedOperands_; }
  const std::vector<std::string>& notices() const { return notices_; }
  // None where it could be begun.
  const std::optional<std::string>& refusal() const { return refusal_; }
  bool isNothingToDo() const { return hadNothingToDo_; }
  bool isCancelled() const { return isCancelled_; }

  std::size_t count(FileReport::Outcome outcome) const;
  std::size_t count(FileReport::Outcome outcome, FileAction action) const;
  // Whether that was done to one file at least.
  bool hasDone(FileAction action) const { return count(FileReport::Outcome::Done, action) > 0; }
  bool hasFailures() const { return count(FileReport::Outcome::Failed) > 0; }
  // Whether everything that was asked for was done.
  bool isWhole() const;
  // Whether this failure is in the report already.
  bool hasFailed(FileAction action, const std::string& path) const;

  // For a person: the first cause of failure with its cure and how many more there are, the applications that were
  // passed over, the remarks, a sentence or two on each line. Empty where there is nothing to tell.
  std::string causes() const;

 private:
  std::deque<FileReport> files_;  // tens of thousands, perhaps, and never moved
  std::vector<PassedOver> passedOver_;
  std::vector<std::string> remarks_;
  std::vector<UnusedOperand> unusedOperands_;
  std::vector<std::string> notices_;
  std::optional<std::string> refusal_;
  bool hadNothingToDo_ = false;
  std::optional<std::string> summary_;
  bool isCancelled_ = false;
  TaskRecord* record_ = nullptr;
};

}  // namespace vantory
