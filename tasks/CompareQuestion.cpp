// "--compare": what restoring a backup would change, or what differs between two.

#include <algorithm>
#include <ostream>
#include <utility>

#include "backups/QWDataController.h"
#include "backups/comparison/Comparison.h"
#include "base/Format.h"
#include "base/Json.h"
#include "base/Text.h"
#include "services/TaskReport.h"
#include "tasks/DryRun.h"
#include "tasks/KeyList.h"
#include "tasks/NamedBackup.h"
#include "tasks/Question.h"
#include "tasks/Refusal.h"

namespace vantory {

namespace {

constexpr std::size_t kMostShown = 50;     // keys or lines of one file, in the table
constexpr std::size_t kLongestLine = 160;  // bytes of a line of text, or of a key path
constexpr std::size_t kMostTold = 10;      // files that could not be compared, on standard error

using BackupPointer = std::shared_ptr<const QWBackup>;

QWDataController& library() {
  return QWDataController::sharedController();
}

// Null, with the reason told, where none can be read.
BackupPointer backupFor(const QuestionContext& context, const std::string& operand) {
  const auto backup = backupToRead(operand);
  if (backup) return *backup;
  refuseQuestion(backup.error().text, context);
  return nullptr;
}

// What the backups hold.
struct Held {
  AppList apps;
  std::vector<UnknownPart> unknown;

  void add(const QWBackup& backup) {
    apps.insert(apps.end(), backup.children().begin(), backup.children().end());
    for (const UnknownPart& part : backup.unknown())
      if (std::ranges::count(unknown, part.name, &UnknownPart::name) == 0) unknown.push_back(part);
  }
};

// The short names of "-trash" count here too, and keys that the backups alone know.
KeyList keysFor(const std::string& operand, const Held& held, TaskReport& report) {
  const auto alias = std::ranges::find(aliasTable(), operand, &Alias::name);
  const KeyList keys = splitKeys(alias == aliasTable().end() ? operand : alias->keys);
  KeyList known;
  for (const auto& item : itemsForOperand(operand, keys, report, held.apps, held.unknown)) known.push_back(item->key());
  return known;
}

bool areKeys(const std::string& operand, const Held& held) {
  TaskReport ignored;
  return !keysFor(operand, held, ignored).empty() && ignored.unusedOperands().empty();
}

// For a second operand, which may be keys too: those that are known are meant.
bool isBackup(const std::string& operand, const Held& held) {
  return !areKeys(operand, held) && (operand.find('/') != std::string::npos || !backupsMeant(operand, operand).empty());
}

std::string headingOf(const ComparisonRequest& request) {
  if (request.before)
    return formatted("What changes from \"%@\" to \"%@\":", printable(request.before->name()),
                     printable(request.after->name()));
  return formatted("What restoring \"%@\" would change:", printable(request.after->name()));
}

template <class List, class Line>
void appendFirst(std::string& text, const List& list, Line line) {
  for (std::size_t i = 0; i < list.size(); ++i) {
    if (i == kMostShown) {
      text += formatted("      ... and %i more. --json lists all.\n", list.size() - i);
      return;
    }
    text += "      " + line(list[i]) + "\n";
  }
}

// In one line, and not too long.
std::string cut(const std::string& text) {
  const std::string_view beginning = shortened(text, kLongestLine);
  return printable(beginning) + (beginning.size() < text.size() ? "…" : "");
}

void appendFile(std::string& text, const FileComparison& file) {
  text += formatted("  %@  %@\n", nameOf(file.difference), printable(file.path));
  if (!file.remark.empty()) text += "      " + printable(file.remark) + "\n";
  appendFirst(text, file.keys,
              [](const KeyChange& change) { return cut(keyPathInWords(change.path)) + ": " + changeInShort(change); });
  appendFirst(text, file.lines, [](const LineChange& change) {
    return formatted("%i %@ %@", change.number, change.added ? "+" : "-", cut(change.line));
  });
}

// Only what there is any of.
std::string countsInWords(const Comparison& comparison) {
  constexpr std::pair<Difference, const char*> kWords[] = {{Difference::Same, "the same"},
                                                           {Difference::Different, "different"},
                                                           {Difference::Added, "added"},
                                                           {Difference::Removed, "removed"},
                                                           {Difference::Kept, "not in the backup and kept"},
                                                           {Difference::Refused, "refused by a restore"},
                                                           {Difference::Unreadable, "not to be compared"}};
  std::vector<std::string> counts;
  for (const auto& [difference, words] : kWords)
    if (const std::size_t count = comparison.count(difference); count > 0)
      counts.push_back(formatted("%i %@", count, words));
  return (counts.empty() ? "There are no files to compare" : "Files: " + joined(counts, ", ")) + ".\n";
}

std::string table(const ComparisonRequest& request, const Comparison& comparison) {
  std::string text = headingOf(request);
  const bool isSame = std::ranges::all_of(comparison.items, [](const auto& item) { return item.files.empty(); });
  text += isSame ? " nothing.\n" : "\n";
  for (const ItemComparison& item : comparison.items) {
    if (item.files.empty()) continue;
    text += formatted("\n%@: %@ (%@)\n", item.application, item.name, item.key);
    for (const FileComparison& file : item.files) appendFile(text, file);
  }
  return text + "\n" + countsInWords(comparison);
}

PropertyListDictionary entryFor(const FileComparison& file) {
  PropertyListDictionary entry;
  entry.append("path", file.path);
  entry.append("difference", nameOf(file.difference));
  if (!file.remark.empty()) entry.append("remark", file.remark);
  PropertyListArray keys;
  for (const KeyChange& change : file.keys) {
    PropertyListDictionary key;
    key.append("key", keyPathText(change.path));
    if (change.before) key.append("before", *change.before);
    if (change.after) key.append("after", *change.after);
    keys.push_back(std::move(key));
  }
  if (!keys.empty()) entry.append("keys", std::move(keys));
  PropertyListArray lines;
  for (const LineChange& change : file.lines) {
    PropertyListDictionary line;
    line.append("line", static_cast<std::int64_t>(change.number));
    line.append(change.added ? "added" : "removed", change.line);
    lines.push_back(std::move(line));
  }
  if (!lines.empty()) entry.append("lines", std::move(lines));
  return entry;
}

PropertyListDictionary entryFor(const ItemComparison& item) {
  PropertyListArray files;
  for (const FileComparison& file : item.files) files.push_back(entryFor(file));
  PropertyListDictionary entry;
  entry.append("application", item.application);
  entry.append("key", item.key);
  entry.append("name", item.name);
  entry.append("same", static_cast<std::int64_t>(item.same));
  entry.append("files", std::move(files));
  return entry;
}

PropertyListDictionary entryFor(const QWBackup& backup, const DryRun& run) {
  PropertyListDictionary entry;
  entry.append("name", backup.name());
  entry.append("path", run.placeOnDisk(backup.path()));
  return entry;
}

PropertyListDictionary entryFor(const UnknownPart& part) {
  PropertyListDictionary entry;
  entry.append("name", part.name);
  entry.append("reason", part.reason);
  return entry;
}

std::string json(const ComparisonRequest& request, const Comparison& comparison, const TaskReport& report,
                 const std::vector<UnknownPart>& unknown, const DryRun& run) {
  PropertyListDictionary counts;
  for (const Difference difference : {Difference::Same, Difference::Different, Difference::Added, Difference::Removed,
                                      Difference::Kept, Difference::Refused, Difference::Unreadable})
    counts.append(nameOf(difference), static_cast<std::int64_t>(comparison.count(difference)));
  PropertyListArray items;
  for (const ItemComparison& item : comparison.items) items.push_back(entryFor(item));
  PropertyListArray unused;
  for (const auto& operand : report.unusedOperands()) unused.push_back(operand.operand);
  PropertyListArray parts;
  for (const UnknownPart& part : unknown) parts.push_back(entryFor(part));
  PropertyListDictionary answer;
  if (request.before) answer.append("before", entryFor(*request.before, run));
  answer.append("after", entryFor(*request.after, run));
  answer.append("counts", std::move(counts));
  answer.append("items", std::move(items));
  answer.append("unused", std::move(unused));
  answer.append("unknown", std::move(parts));
  return writeJson(std::move(answer)) + "\n";
}

void tellErrors(const QuestionContext& context, const Comparison& comparison, const TaskReport& report,
                const std::vector<UnknownPart>& unknown) {
  const auto tell = [&](const std::string& line) { context.errors << "Vantory: " << printable(line) << '\n'; };
  for (const auto& operand : report.unusedOperands()) tell(operand.reason);
  for (const UnknownPart& part : unknown)
    tell(formatted("Files of \"%@\" were not compared: %@.", part.name, part.reason));
  std::size_t told = 0;
  for (const ItemComparison& item : comparison.items)
    for (const FileComparison& file : item.files)
      if (file.difference == Difference::Unreadable && told++ < kMostTold) tell(file.remark);
  if (told > kMostTold) tell(formatted("... and %i more could not be compared.", told - kMostTold));
}

}  // namespace

int compareBackup(const QuestionContext& context) {
  const std::vector<std::string>& operands = context.operands;
  if (operands.empty())
    return refuseQuestion("--compare needs a backup: its name in the library, or its path.", context);
  if (operands.size() > 3)
    return refuseQuestion(formatted("\"%@\" is one operand too many. Names with blanks need quotes.", operands[3]),
                          context);
  DryRun run({"vantory"}, context.errors);
  if (const Status begun = run.begin(true); !begun) return refuseToldQuestion(begun.error().text, context);
  library().populateApps();
  library().populateBackups();
  ComparisonRequest request{.after = backupFor(context, operands[0])};
  if (!request.after) return 1;
  Held held;
  held.add(*request.after);
  const bool areTwo = operands.size() == 3 || (operands.size() == 2 && isBackup(operands[1], held));
  if (areTwo) {
    request.before = std::exchange(request.after, backupFor(context, operands[1]));
    if (!request.after) return 1;
    held.add(*request.after);
  }
  TaskReport report;
  const std::size_t keys = areTwo ? 2 : 1;
  if (operands.size() > keys) request.items = keysFor(operands[keys], held, report);
  if (request.items && request.items->empty()) {
    if (report.unusedOperands().empty())
      return refuseQuestion(formatted("\"%@\" names no item.", operands[keys]), context);
    tellErrors(context, {}, report, {});
    return refuseToldQuestion(report.unusedOperands().front().reason, context);
  }
  const Comparison comparison = compareBackups(request);
  // Whoever names items has not asked for the others.
  if (request.items) held.unknown.clear();
  context.output << (context.form == AnswerForm::Json ? json(request, comparison, report, held.unknown, run)
                                                      : table(request, comparison));
  tellErrors(context, comparison, report, held.unknown);
  return 0;
}

}  // namespace vantory
