// How a task's report is kept and put into words.
#include "services/TaskReport.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "base/Format.h"

namespace vantory {

using Outcome = FileReport::Outcome;

const char* nameOf(FileAction action) {
  switch (action) {
    case FileAction::Trash:
      return "trash";
    case FileAction::Restore:
      return "restore";
    case FileAction::Copy:
      return "copy";
    case FileAction::Lock:
      return "lock";
    case FileAction::Unlock:
      return "unlock";
    case FileAction::Move:
      return "move";
    case FileAction::Remove:
      return "remove";
    case FileAction::Write:
      return "write";
    case FileAction::List:
      return "list";
    case FileAction::PutBack:
      return "putback";
    case FileAction::Create:
      return "create";
    case FileAction::Replace:
      return "replace";
    case FileAction::Default:
      return "default";
    case FileAction::Sync:
      break;
  }
  return "sync";
}

std::optional<FileAction> actionNamed(std::string_view name) {
  for (int number = 0; number <= static_cast<int>(FileAction::Default); ++number)
    if (const auto action = static_cast<FileAction>(number); name == nameOf(action)) return action;
  return std::nullopt;
}

void TaskReport::done(FileAction action, const std::string& path, const std::string& item, const std::string& place) {
  files_.push_back({.action = action, .path = path, .item = item, .place = place});
  if (record_) record_->done(action, path, item, place);
}

void TaskReport::skipped(FileAction action, const std::string& path, Error cause, const std::string& item) {
  files_.push_back({.action = action,
                    .path = path,
                    .item = item,
                    .outcome = Outcome::Skipped,
                    .cause = std::make_shared<const Error>(std::move(cause))});
}

void TaskReport::failed(FileAction action, const std::string& path, Error cause, const std::string& item) {
  files_.push_back({.action = action,
                    .path = path,
                    .item = item,
                    .outcome = Outcome::Failed,
                    .cause = std::make_shared<const Error>(std::move(cause))});
}

void TaskReport::add(FileAction action, const std::string& path, const Status& status, const std::string& item,
                     const std::string& place) {
  if (status)
    done(action, path, item, place);
  else
    failed(action, path, status.error(), item);
}

void TaskReport::passedOver(std::string application, std::string reason) {
  passedOver_.push_back({std::move(application), std::move(reason)});
}

void TaskReport::planned(FileAction action, const std::vector<FilePlan>& files, const std::string& item) {
  if (record_ && !files.empty()) record_->planned(action, files, item);
}

void TaskReport::planned(FileAction action, const std::vector<std::string>& paths, const std::string& item) {
  if (!record_) return;
  std::vector<FilePlan> files;
  files.reserve(paths.size());
  for (const std::string& path : paths) files.push_back({.path = path});
  planned(action, files, item);
}

void TaskReport::noted(FileAction action, const std::string& path, const std::string& item, const std::string& place) {
  if (record_) record_->done(action, path, item, place);
}

void TaskReport::returned(const std::string& path, const std::string& place) {
  std::erase_if(files_, [&](const FileReport& file) {
    return file.action == FileAction::Trash && file.path == path && file.place == place;
  });
  if (record_) record_->returned(path, place);
}

void TaskReport::take(TaskReport other) {
  for (const FileReport& file : other.files_)
    if (file.outcome == Outcome::Done) noted(file.action, file.path, file.item, file.place);
  std::ranges::move(other.files_, std::back_inserter(files_));
  std::ranges::move(other.remarks_, std::back_inserter(remarks_));
  std::ranges::move(other.notices_, std::back_inserter(notices_));
}

std::size_t TaskReport::count(Outcome outcome) const {
  return static_cast<std::size_t>(
      std::ranges::count_if(files_, [&](const FileReport& file) { return file.outcome == outcome; }));
}

std::size_t TaskReport::count(Outcome outcome, FileAction action) const {
  return static_cast<std::size_t>(std::ranges::count_if(
      files_, [&](const FileReport& file) { return file.outcome == outcome && file.action == action; }));
}

bool TaskReport::isWhole() const {
  const auto wasNotDone = [](const FileReport& file) { return file.outcome == Outcome::Failed || file.wasLeftOut(); };
  return !refusal_ && passedOver_.empty() && !isCancelled_ && std::ranges::none_of(files_, wasNotDone);
}

bool TaskReport::hasFailed(FileAction action, const std::string& path) const {
  return std::ranges::any_of(files_, [&](const FileReport& file) {
    return file.outcome == Outcome::Failed && file.action == action && file.path == path;
  });
}

// One cause stands for all; the log has the others.
std::string TaskReport::causes() const {
  std::string text;
  const auto addLine = [&text](const std::string& line) { text += (text.empty() ? "" : "\n") + line; };
  const auto first =
      std::ranges::find_if(files_, [](const FileReport& file) { return file.outcome == Outcome::Failed; });
  if (first != files_.end()) {
    addLine(first->cause->text);
    if (!first->cause->cure.empty()) addLine(first->cause->cure);
    if (const std::size_t more = count(Outcome::Failed) - 1; more > 0)
      addLine(formatted("The log names %i more.", more));
  }
  for (const PassedOver& passed : passedOver_) addLine(passed.reason);
  for (const std::string& remark : remarks_) addLine(remark);
  return text;
}

}  // namespace vantory
