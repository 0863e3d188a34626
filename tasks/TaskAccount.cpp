// Puts a report into words, into JSON and into a number.
#include "tasks/TaskAccount.h"

#include <algorithm>
#include <map>
#include <set>

#include "base/ExitCodes.h"
#include "base/Format.h"
#include "base/Text.h"
#include "platform/SystemLog.h"
#include "services/QWLocalPaths.h"
#include "services/Runtime.h"
#include "services/TaskReport.h"
#include "services/files/QWFileManager.h"
#include "services/log/QWLog.h"
#include "tasks/AppController.h"
#include "tasks/TaskCommand.h"
#include "tasks/TaskOptions.h"

namespace vantory {

namespace {

using Outcome = FileReport::Outcome;

constexpr std::size_t kMostLines = 10;  // of one kind

// One line on standard error and in the system's log.
void tell(const std::string& line) {
  Runtime::current().platform().systemLog.write(printable(line));
}

// The first lines, and how many more there are.
template <class List, class Line>
void tellFirst(const List& list, Line line) {
  std::size_t told = 0;
  for (const auto& each : list) {
    if (told++ == kMostLines) return tell(formatted("... and %i more.", list.size() - kMostLines));
    tell(line(each));
  }
}

template <class Predicate>
std::vector<FileReport> filesIn(const TaskReport& report, Predicate predicate) {
  std::vector<FileReport> files;
  std::ranges::copy_if(report.files(), std::back_inserter(files), predicate);
  return files;
}

bool hasFailed(const FileReport& file) {
  return file.outcome == Outcome::Failed;
}

// What failed as a whole, such as the writing of a backup; preference files are counted.
bool isWholeTask(const FileReport& file) {
  return file.action == FileAction::Write || file.action == FileAction::Sync;
}

std::string filesAndFolders(std::size_t files, std::size_t folders) {
  if (folders == 0) return counted(files, "file");
  return (files > 0 ? counted(files, "file") + " and " : "") + counted(folders, "folder");
}

// Each cause once, and each cure behind them: many files may fail for one reason.
void tellCauses(const std::vector<FileReport>& files) {
  std::map<std::string, std::size_t> counts;
  std::vector<std::string> causes;
  for (const FileReport& file : files)
    if (++counts[file.cause->text] == 1) causes.push_back(file.cause->text);
  tellFirst(causes, [&](const std::string& cause) {
    return counts[cause] == 1 ? cause : formatted("%@ (%i times)", cause, counts[cause]);
  });
  std::set<std::string> cures;
  for (const FileReport& file : files)
    if (!file.cause->cure.empty()) cures.insert(file.cause->cure);
  tellFirst(cures, [](const std::string& cure) { return cure; });
}

void tellFailures(const TaskReport& report, bool keepsLog) {
  const std::vector<FileReport> failures = filesIn(report, hasFailed);
  tellCauses(failures);
  const auto counting = [&](auto predicate) {
    return static_cast<std::size_t>(std::ranges::count_if(failures, predicate));
  };
  // Only folders are listed.
  const std::size_t folders = counting([](const FileReport& file) { return file.action == FileAction::List; });
  const std::size_t files = failures.size() - folders - counting(isWholeTask);
  if (files + folders == 0) return;
  const std::string what = filesAndFolders(files, folders);
  if (keepsLog)
    QWLog::appendLogAndPrint("%@ could not be processed - see the log for details.", what);
  else
    tell(what + " could not be processed.");
}

const char* nameOf(Outcome outcome) {
  switch (outcome) {
    case Outcome::Done:
      return "done";
    case Outcome::Skipped:
      return "skipped";
    case Outcome::Failed:
      break;
  }
  return "failed";
}

// Keys that have nothing to say are left out.
PropertyListDictionary entryFor(const FileReport& file) {
  PropertyListDictionary entry;
  entry.append("action", nameOf(file.action));
  entry.append("path", file.path);
  entry.append("outcome", nameOf(file.outcome));
  if (!file.item.empty()) entry.append("item", file.item);
  if (!file.place.empty()) entry.append("place", file.place);
  if (!file.cause) return entry;
  PropertyListDictionary error;
  error.append("code", static_cast<int>(file.cause->code));
  error.append("text", file.cause->text);
  if (!file.cause->cure.empty()) error.append("cure", file.cause->cure);
  if (file.cause->consentMissing) error.append("consentMissing", true);
  entry.append("error", std::move(error));
  return entry;
}

PropertyListArray textsOf(const std::vector<std::string>& texts) {
  PropertyListArray array;
  for (const std::string& text : texts) array.push_back(text);
  return array;
}

// The names are those of the files' outcomes.
PropertyListDictionary countsOf(const TaskReport& report) {
  PropertyListDictionary counts;
  for (const Outcome outcome : {Outcome::Done, Outcome::Skipped, Outcome::Failed})
    counts.append(nameOf(outcome), report.count(outcome));
  return counts;
}

// Whether all that was to be locked, or unlocked, was so already. What was not copied is not as it was to be.
bool wereLocksSo(FileAction deed, const TaskReport& report) {
  return isOfLocks(deed) && !report.hasDone(deed) && report.count(Outcome::Skipped, deed) > 0;
}

}  // namespace

// What stands before the task and behind what it understands.
void noteUnusedArguments(const CommandContext& context, std::size_t mostOperands) {
  const std::vector<std::string>& arguments = context.arguments;
  const auto note = [&](const std::string& argument, const std::string& reason) {
    const std::string word = formatted("\"%@\" was not used", argument);
    context.report.unused({.operand = argument, .reason = word + reason});
  };
  for (std::size_t i = 1; i < context.position; ++i)
    if (!isTaskOption(arguments[i])) note(arguments[i], ".");
  // Tasks with two dashes refuse surplus operands themselves.
  if (arguments[context.position].starts_with("--")) return;
  for (std::size_t i = 1; i <= context.operandCount(); ++i) {
    const std::string argument = *context.operand(i);
    const bool isForNotifications = i == context.operandCount() && asksForNotifications(argument);
    // Of three operands the one between name and keys has no meaning.
    const bool isBetween = mostOperands == 3 && context.operandCount() >= 3 && i == 2;
    if ((i > mostOperands || isBetween) && !isForNotifications && !argument.empty() && argument != "-")
      note(argument, isTaskOption(argument) ? ": it goes before the task."
                                            : ". Names with blanks need quotes; keys are separated by commas.");
    else if (isTaskOption(argument))
      context.report.notice(
          formatted("\"%@\" was taken for an operand: as an option it goes before the task.", argument));
  }
}

void noteKeptName(const std::string& wanted, const std::string& kept, TaskReport& report) {
  if (kept != wanted) report.notice(formatted("\"%@\" is kept as \"%@\".", wanted, kept));
}

void tellWhatWasNotDone(const TaskReport& report, bool keepsLog) {
  const auto log = keepsLog ? QWLog::sharedController().path() : std::nullopt;
  tellFirst(report.notices(), [](const std::string& notice) { return notice; });
  tellFirst(report.unusedOperands(), [](const TaskReport::UnusedOperand& unused) { return unused.reason; });
  tellFirst(report.passedOver(), [](const TaskReport::PassedOver& passed) { return passed.reason; });
  tellCauses(filesIn(report, [](const FileReport& file) { return file.wasLeftOut(); }));
  tellFailures(report, log.has_value());
  tellFirst(report.remarks(), [](const std::string& remark) { return remark; });
  if (log && (!report.isWhole() || !report.remarks().empty()) && !report.refusal()) tell("The log: " + *log);
}

std::string sentenceOnNothing(FileAction deed, const TaskReport& report) {
  if (!report.remarks().empty() || !report.unusedOperands().empty() || report.summary() || report.refusal()) return "";
  std::string sentence = sentenceOn(deed, report);
  sentence.pop_back();
  return formatted("%@ in %@ and the folders that all users share.", sentence,
                   QWLocalPaths::userDirectory().value_or("no home"));
}

// A folder counts as one, whatever it holds.
std::string filesAndFolders(const std::set<std::string>& places) {
  const auto folders = static_cast<std::size_t>(std::ranges::count_if(places, [](const std::string& place) {
    return QWFileManager::isDirectoryAtPath(place) && !QWFileManager::isSymbolicLinkAtPath(place);
  }));
  return filesAndFolders(places.size() - folders, folders);
}

// The one sentence that a person at a terminal gets where all went well.
std::string sentenceOn(FileAction deed, const TaskReport& report) {
  if (report.summary()) return *report.summary();
  std::set<std::string> items;
  std::set<std::string> places;  // one file may belong to two items
  const bool wereSo = wereLocksSo(deed, report);
  for (const FileReport& file : report.files()) {
    if (file.action != deed || file.outcome != (wereSo ? Outcome::Skipped : Outcome::Done)) continue;
    items.insert(file.item);
    places.insert(file.place.empty() ? file.path : file.place);
  }
  const std::size_t files = places.size();
  const std::string what = filesAndFolders(places) + " of " + counted(items.size(), "item");
  if (wereSo)
    return formatted(deed == FileAction::Lock ? "%@ %@ locked already." : "%@ %@ not locked.", what,
                     files == 1 ? "is" : "are");
  switch (deed) {
    case FileAction::Trash:
      return formatted(files > 0 ? "Moved %@ to the Trash." : "There was nothing to trash.", what);
    case FileAction::Copy:
      return formatted(files > 0 ? "Backed up %@." : "There was nothing to back up.", what);
    case FileAction::Restore:
      return formatted(files > 0 ? "Restored %@." : "There was nothing to restore.", what);
    case FileAction::Lock:
      return formatted(files > 0 ? "Locked %@." : "There was nothing to lock.", what);
    case FileAction::Unlock:
      return formatted(files > 0 ? "Unlocked %@." : "There was nothing to unlock.", what);
    default:
      return "";
  }
}

void appendFields(PropertyListDictionary& fields, const TaskReport& report) {
  PropertyListArray files;
  for (const FileReport& file : report.files()) files.push_back(entryFor(file));
  PropertyListArray passedOver;
  for (const TaskReport::PassedOver& passed : report.passedOver()) {
    PropertyListDictionary entry;
    entry.append("application", passed.application);
    entry.append("reason", passed.reason);
    passedOver.push_back(std::move(entry));
  }
  PropertyListArray unused;
  for (const TaskReport::UnusedOperand& operand : report.unusedOperands()) {
    PropertyListDictionary entry;
    entry.append("operand", operand.operand);
    entry.append("reason", operand.reason);
    if (!operand.nearest.empty()) entry.append("nearest", operand.nearest);
    unused.push_back(std::move(entry));
  }
  fields.append("counts", countsOf(report));
  fields.append("files", std::move(files));
  fields.append("passedOver", std::move(passedOver));
  fields.append("unused", std::move(unused));
  fields.append("notices", textsOf(report.notices()));
  fields.append("remarks", textsOf(report.remarks()));
  if (report.refusal()) fields.append("error", *report.refusal());
}

// Done in part goes before an operand that was not used.
int strictExitCode(int exitCode, const TaskReport& report, std::optional<FileAction> deed) {
  if (exitCode != 0) return report.isNothingToDo() ? kNothingMatched : exitCode;
  if (!report.isWhole()) return kDoneInPart;
  const bool didNothing =
      deed && report.summary().value_or("").empty() && !report.hasDone(*deed) && !wereLocksSo(*deed, report);
  return didNothing || !report.unusedOperands().empty() ? kNothingMatched : 0;
}

}  // namespace vantory
