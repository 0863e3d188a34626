// Writes a receipt line by line.
#include "services/receipts/TaskReceipt.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "base/Format.h"
#include "base/Paths.h"
#include "platform/Clock.h"
#include "platform/FileSystem.h"
#include "platform/TrashLayout.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"
#include "services/log/QWLog.h"
#include "services/messages/NotificationCenter.h"
#include "services/receipts/FileTraits.h"
#include "services/receipts/ReceiptFolder.h"
#include "services/receipts/ReceiptText.h"

namespace vantory {

namespace {

using namespace std::chrono_literals;

constexpr std::size_t kMostPending = 64 * 1024;  // bytes

FileSystem& files() {
  return Runtime::current().platform().files;
}

// Puts something there that it must be possible to know again.
bool leavesSomething(FileAction action) {
  return action == FileAction::Restore || action == FileAction::PutBack || action == FileAction::Create ||
         action == FileAction::Move || action == FileAction::Replace;
}

void append(std::string& line, const std::optional<FileTraits>& traits) {
  if (!traits) return;
  receipt::append(line, receipt::kIdentity, formatted("%i:%i", traits->identity.device, traits->identity.number));
  receipt::append(line, receipt::kSize, std::to_string(traits->size));
  receipt::append(line, receipt::kModified, receipt::momentText(traits->modified));
}

// Else a receipt itself says by what an item of the Trash is known again.
bool hasTrashWithNotes() {
  const auto trash = QWLocalPaths::trashDirectory();
  return !trash || hasTrashNotes(*trash);
}

bool isThere(const std::string& path) {
  const auto info = files().info(path, Links::DoNotFollow);
  return info || !meansMissing(info.error());
}

bool isLocked(const std::string& path) {
  const auto info = files().info(path, Links::DoNotFollow);
  return info && info->locked;
}

}  // namespace

TaskReceipt::TaskReceipt(TaskReport& report, Task task) : report_(report), task_(std::move(task)) {
  report_.setRecord(this);
}

TaskReceipt::~TaskReceipt() {
  end();
}

void TaskReceipt::takesBack(const std::string& receipt) {
  undoes_ = receipt;
  begin();
  flush();
}

void TaskReceipt::planned(FileAction action, const std::vector<FilePlan>& plans, const std::string& item) {
  std::string files;
  const bool putsSomething = action == FileAction::Restore || action == FileAction::PutBack;
  const bool trashesUnnoted = (action == FileAction::Trash || putsSomething) && !hasTrashWithNotes();
  for (const FilePlan& plan : plans) {
    if (isOfLocks(action) && isLocked(plan.path) == (action == FileAction::Lock)) {
      wereSo_.emplace(action, plan.path);
      continue;
    }
    files += "{ ";
    receipt::append(files, receipt::kPath, plan.path);
    if (!plan.source.empty()) receipt::append(files, receipt::kSource, plan.source);
    if (!plan.place.empty()) receipt::append(files, receipt::kPlace, plan.place);
    if (putsSomething && isThere(plan.path)) receipt::append(files, receipt::kThere, "1");
    if (action == FileAction::Move) append(files, traitsOf(plan.path));
    if (trashesUnnoted) append(files, ownTraitsOf(plan.path));
    files += "}, ";
  }
  if (files.empty()) return;
  begin();
  pending_ += "{ ";
  receipt::append(pending_, receipt::kPlan, nameOf(action));
  if (!item.empty()) receipt::append(pending_, receipt::kItem, item);
  pending_.append(receipt::kFiles).append(" = (").append(files).append("); },\n");
  flush();
}

// What is told of later is not lost: where it lies can be found out from the plan.
void TaskReceipt::done(FileAction action, const std::string& path, const std::string& item, const std::string& place) {
  if (wereSo_.contains({action, path})) return;
  // What was so when that was planned is not any more.
  if (action == FileAction::Lock) wereSo_.erase({FileAction::Unlock, path});
  if (action == FileAction::Unlock) wereSo_.erase({FileAction::Lock, path});
  if (action == FileAction::Write) return;  // settings, of which what matters is noted
  begin();
  pending_ += "{ ";
  receipt::append(pending_, receipt::kDone, nameOf(action));
  if (!item.empty()) receipt::append(pending_, receipt::kItem, item);
  receipt::append(pending_, receipt::kPath, path);
  if (!place.empty() && place != path) receipt::append(pending_, receipt::kPlace, place);
  if (leavesSomething(action)) append(pending_, traitsOf(action == FileAction::Move ? place : path));
  if (action == FileAction::Trash && !hasTrashNotes(paths::parent(place))) append(pending_, ownTraitsOf(place));
  pending_ += "},\n";
  note(action, path);
  // Nobody but the folder's own entry would tell later that it is the task's.
  if (action == FileAction::Create || pending_.size() > kMostPending) flush();
}

void TaskReceipt::returned(const std::string& path, const std::string& place) {
  pending_ += "{ ";
  receipt::append(pending_, receipt::kDone, nameOf(FileAction::PutBack));
  receipt::append(pending_, receipt::kPath, path);
  receipt::append(pending_, receipt::kPlace, place);
  pending_ += "},\n";
  --changes_;
}

// A backup that was made and removed again is as if it had never been; a copy is part of one.
void TaskReceipt::note(FileAction action, const std::string& path) {
  if (action == FileAction::Create)
    made_ = path;
  else if (action == FileAction::Remove && path == made_)
    made_.clear();
  else if (action == FileAction::Remove)
    removedAnything_ = true;
  else if (action != FileAction::Copy)
    ++changes_;
}

void TaskReceipt::end() {
  if (isEnded_) return;
  isEnded_ = true;
  report_.setRecord(nullptr);
  if (!isBegun_) return;
  const bool isInPart = !report_.isWhole();
  pending_ += "{ ";
  receipt::append(pending_, receipt::kEnded, receipt::momentText(Runtime::current().platform().clock.now()));
  // What passed an application over, or could not take something back that it might another time, is tried again.
  const bool isUnfinishedUndo = !undoes_.empty() && std::ranges::any_of(report_.files(), [](const FileReport& file) {
    return file.outcome == FileReport::Outcome::Failed && file.cause->code != kNeverAgain;
  });
  const bool isBrokenOff = report_.isCancelled() || !report_.passedOver().empty() || isUnfinishedUndo;
  receipt::append(pending_, receipt::kOutcome,
                  isBrokenOff ? receipt::kBrokenOff
                  : isInPart  ? receipt::kInPart
                              : receipt::kWhole);
  pending_ += "}\n)\n";
  flush();
  // On a full disk nothing but the name of the file may be there.
  if (file_ && size_ == 0)
    if (const auto folder = receiptFolder()) (void)files().remove(receiptPath(*folder, name_));
  hold_.reset();
  NotificationCenter::shared().postOnMainThreadLater(kReceiptsRefresh, {});
  if (!failure_) return;
  QWLog::appendLog("The receipt of this task could not be written: %@", failure_->text);
  if (canBeTakenBack() || removedAnything_)
    report_.remark(
        formatted("This task cannot be taken back as a whole: its receipt could not be written. %@", failure_->text));
}

// The folder is held until the file is, so that no two tasks take one name and nobody prunes it.
Status TaskReceipt::open() {
  const auto folder = receiptFolder();
  if (!folder) return Error{std::errc::no_such_file_or_directory, "There is no home folder."};
  if (const Status made = files().makeFolder(*folder); !made) return made;
  const auto folderHold = files().holdFolder(*folder, 2s);
  pruneReceipts(*folder);
  name_ = newReceiptName(*folder, Runtime::current().platform().clock.now());
  const std::string path = receiptPath(*folder, name_);
  const auto earlier = files().info(path, Links::DoNotFollow);
  if (earlier || !meansMissing(earlier.error()))
    return earlier ? Error{std::errc::file_exists, path + " is there already."} : earlier.error();
  auto file = files().openForAppending(path);
  if (!file) return file.error();
  file_ = std::move(*file);
  if (auto hold = files().holdFolder(path, 0ms)) hold_ = std::move(*hold);
  return {};
}

void TaskReceipt::begin() {
  if (isBegun_) return;
  isBegun_ = true;
  if (const Status opened = open(); !opened) failure_ = opened.error();
  pending_ = "(\n{ ";
  receipt::append(pending_, receipt::kTask, task_.name);
  receipt::append(pending_, receipt::kVersion, VANTORY_VERSION);
  receipt::append(pending_, receipt::kBegun, receipt::momentText(Runtime::current().platform().clock.now()));
  if (const std::string& run = Runtime::current().manyHomesRun; !run.empty())
    receipt::append(pending_, receipt::kRun, run);
  if (!undoes_.empty()) receipt::append(pending_, receipt::kUndoes, undoes_);
  pending_.append(receipt::kOperands).append(" = (");
  for (const std::string& operand : task_.operands) {
    receipt::append(pending_, operand);
    pending_ += ", ";
  }
  pending_ += "); },\n";
}

// What could not be written comes again with the next line. A file too large to be read again gets no more: that it was
// not ended makes what is planned in it be looked for.
void TaskReceipt::flush() {
  if (!file_) return pending_.clear();
  if (size_ + pending_.size() > kLargestReadBytes) {
    failure_ = {std::errc::file_too_large, "So many files have no place in it."};
    file_.reset();
    return pending_.clear();
  }
  std::string_view left = pending_;
  const Status added = file_->append(left);
  size_ += pending_.size() - left.size();
  pending_.erase(0, pending_.size() - left.size());
  if (!added)
    failure_ = added.error();
  else
    failure_.reset();
}

}  // namespace vantory
