// How the outcome of a task is put before the person.
#include "backups/ui/FailureReport.h"

#include <cctype>
#include <utility>

#include "base/Text.h"
#include "services/TaskReport.h"
#include "services/log/QWLog.h"
#include "services/threads/BackgroundThreads.h"

namespace vantory {

namespace {

using Outcome = FileReport::Outcome;

constexpr std::size_t kMostRows = 1000;

const char* eventOf(const FileReport& file) {
  if (file.outcome == Outcome::Skipped) return "left out";
  switch (file.action) {
    case FileAction::Trash:
      return "not trashed";
    case FileAction::Restore:
      return "not restored";
    case FileAction::Copy:
      return "not copied";
    case FileAction::Lock:
      return "not locked";
    case FileAction::Unlock:
      return "not unlocked";
    case FileAction::Move:
      return "not moved";
    case FileAction::Remove:
      return "not removed";
    case FileAction::Write:
      return "not written";
    case FileAction::List:
      return "not read";
    case FileAction::PutBack:
      return "not put back";
    case FileAction::Replace:
      return "not replaced";
    case FileAction::Create:
      return "not made";
    case FileAction::Default:
      return "not changed";
    case FileAction::Sync:
      break;
  }
  return "maybe not on disk";
}

// For causes that come without one.
std::string usualCure(const Error& cause) {
  switch (cause.code) {
    case std::errc::permission_denied:
    case std::errc::operation_not_permitted:
      return "Whoever owns it, or an administrator, can give you the right.";
    case std::errc::no_space_on_device:
      return "Make room on that disk, then try again.";
    case std::errc::read_only_file_system:
      return "That disk can only be read; let it be written to, then try again.";
    default:
      return "The log says what was tried.";
  }
}

// Causes begin with the path, which stands beside them already.
std::string causeOf(const FileReport& file) {
  std::string cause = file.cause->text;
  if (cause.starts_with(file.path + ": ")) cause.erase(0, file.path.size() + 2);
  if (!cause.ends_with('.')) cause += '.';
  return cause + " " + (file.cause->cure.empty() ? usualCure(*file.cause) : file.cause->cure);
}

// What failed, then the applications that were passed over. A file that was as wanted already has no code.
std::vector<AlertRow> rowsOf(const TaskReport& report) {
  std::vector<AlertRow> rows;
  for (const FileReport& file : report.files()) {
    if (file.outcome == Outcome::Failed || file.wasLeftOut()) rows.push_back({file.path, eventOf(file), causeOf(file)});
    if (rows.size() == kMostRows) {
      rows.push_back({"", "and more", "The log names them all."});
      break;
    }
  }
  for (const TaskReport::PassedOver& passed : report.passedOver())
    rows.push_back({passed.application, "passed over", passed.reason});
  return rows;
}

// What repeats the text above it, as the log has it, goes on without.
std::string withoutRepeating(const std::string& failure, std::string text) {
  const std::string repeated = failure + ": ";
  if (const auto begin = text.find(repeated); begin != std::string::npos) {
    text.erase(begin, repeated.size());
    text[begin] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[begin])));
  }
  return text;
}

}  // namespace

void reportFailure(const std::string& failure, const std::string& reason, AlertParent parentWindow) {
  QWLog::appendLog("%@: %@", failure, reason);
  QWAlert::alertSheetWithMessageText(failure, reason, parentWindow);
}

void tellNotices(const TaskReport& report) {
  if (!report.notices().empty()) QWAlert::alertSheetWithMessageText("Please note", joined(report.notices(), "\n"));
}

// What has no row stands in the text.
bool reportResult(const std::string& failure, const std::string& reason, const TaskReport& report, Retry retry) {
  QWLog::appendLog("%@: %@", failure, withCauses(reason, report));
  AlertTexts texts{.messageText = failure, .defaultButton = "OK", .isDismissedByDefault = true, .rows = rowsOf(report)};
  std::vector<std::string> sentences = report.remarks();
  if (!reason.empty()) sentences.insert(sentences.begin(), reason);
  texts.informativeText =
      withoutRepeating(failure, texts.rows.empty() ? withCauses(reason, report) : joined(sentences, "\n"));
  if (retry == Retry::Offered) texts.alternateButton = "Try Again";
  return QWAlert::alertSheetWithMessageText(texts) == QWAlert::Alternate && retry == Retry::Offered;
}

bool reportWriting(const std::string& failure, const std::string& reason, const TaskReport& report) {
  if (report.hasFailures()) return reportResult(failure, reason, report);
  return reportResult("Some files were left out", "Everything else is in the backup.", report, Retry::None);
}

bool startTask(std::function<void()> work) {
  if (SerialWork::tasks().add(std::move(work))) return true;
  reportFailure("The task could not be begun",
                "The system has no thread to give. Please close other programs, then try again.");
  return false;
}

std::string withCauses(const std::string& text, const TaskReport& report) {
  const std::string causes = report.causes();
  if (text.empty() || causes.empty()) return text + causes;
  return text + "\n\n" + causes;
}

void reportFailedPruning(const TaskReport& report) {
  if (report.hasFailures()) reportResult("Old automatic backups could not be removed", "", report, Retry::None);
}

// A restore that put nothing back is none, even where nothing failed.
std::optional<bool> reportIncompleteRestore(const TaskReport& report, Retry retry) {
  tellNotices(report);
  const bool any = report.hasDone(FileAction::Restore);
  if (any && report.isWhole()) return std::nullopt;
  return reportResult(any ? "Not everything could be restored" : "Nothing was restored",
                      report.isCancelled() ? "The restore was cancelled." : "", report, retry);
}

}  // namespace vantory
