// Reads receipts, which may have been cut off at any byte, or spoilt.
#include "services/receipts/Receipt.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <set>
#include <utility>

#include "base/Paths.h"
#include "base/PropertyListBytes.h"
#include "platform/FileSystem.h"
#include "services/Runtime.h"
#include "services/log/QWLog.h"
#include "services/receipts/ReceiptFolder.h"
#include "services/receipts/ReceiptText.h"

namespace vantory {

namespace {

// Thrown by what reads an entry, caught by readReceipt().
struct DamagedReceipt {};

std::string textAt(const PropertyListDictionary& entry, const char* key) {
  const PropertyList* value = entry.find(key);
  const auto text = value ? textOf(*value) : std::string();
  if (!text) throw DamagedReceipt();
  return *text;
}

const PropertyListArray& arrayAt(const PropertyListDictionary& entry, const char* key) {
  const PropertyList* value = entry.find(key);
  const PropertyListArray* array = value ? value->asArray() : nullptr;
  if (!array) throw DamagedReceipt();
  return *array;
}

const PropertyListDictionary& dictionaryIn(const PropertyList& value) {
  const PropertyListDictionary* dictionary = value.asDictionary();
  if (!dictionary) throw DamagedReceipt();
  return *dictionary;
}

Timestamp momentAt(const PropertyListDictionary& entry, const char* key) {
  const auto moment = receipt::momentIn(textAt(entry, key));
  if (!moment) throw DamagedReceipt();
  return *moment;
}

std::uint64_t numberIn(std::string_view text) {
  std::uint64_t number = 0;
  const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (failure != std::errc() || end != text.data() + text.size()) throw DamagedReceipt();
  return number;
}

// Empty, or whole and without detours.
std::string pathAt(const PropertyListDictionary& entry, const char* key) {
  std::string path = textAt(entry, key);
  const bool isPlain = path.starts_with('/') && path.find('\0') == std::string::npos && paths::normalized(path) == path;
  if (!path.empty() && !isPlain) throw DamagedReceipt();
  return path;
}

std::optional<FileTraits> traitsIn(const PropertyListDictionary& entry) {
  const std::string identity = textAt(entry, receipt::kIdentity);
  if (identity.empty()) return std::nullopt;
  const std::size_t colon = identity.find(':');
  if (colon == std::string::npos) throw DamagedReceipt();
  FileTraits traits;
  traits.identity = {numberIn(std::string_view(identity).substr(0, colon)),
                     numberIn(std::string_view(identity).substr(colon + 1))};
  traits.size = numberIn(textAt(entry, receipt::kSize));
  traits.modified = momentAt(entry, receipt::kModified);
  return traits;
}

ReceiptStep stepIn(const PropertyListDictionary& entry, FileAction action, bool isDone, std::string item) {
  ReceiptStep step{.action = action,
                   .isDone = isDone,
                   .path = pathAt(entry, receipt::kPath),
                   .item = std::move(item),
                   .source = pathAt(entry, receipt::kSource),
                   .place = pathAt(entry, receipt::kPlace),
                   .wasThere = !textAt(entry, receipt::kThere).empty(),
                   .traits = traitsIn(entry)};
  if (step.path.empty()) throw DamagedReceipt();
  return step;
}

FileAction actionAt(const PropertyListDictionary& entry, const char* key) {
  const auto action = actionNamed(textAt(entry, key));
  if (!action) throw DamagedReceipt();
  return *action;
}

void readHead(const PropertyListDictionary& entry, Receipt& receipt) {
  receipt.task = textAt(entry, receipt::kTask);
  receipt.run = textAt(entry, receipt::kRun);
  receipt.undoes = textAt(entry, receipt::kUndoes);
  receipt.begun = momentAt(entry, receipt::kBegun);
  for (const PropertyList& operand : arrayAt(entry, receipt::kOperands))
    receipt.operands.push_back(textOf(operand).value_or(""));
}

void readEntry(const PropertyListDictionary& entry, Receipt& receipt) {
  if (entry.find(receipt::kEnded)) {
    receipt.ended = momentAt(entry, receipt::kEnded);
    receipt.outcome = textAt(entry, receipt::kOutcome);
  } else if (entry.find(receipt::kDone)) {
    receipt.steps.push_back(stepIn(entry, actionAt(entry, receipt::kDone), true, textAt(entry, receipt::kItem)));
  } else {
    const FileAction action = actionAt(entry, receipt::kPlan);
    for (const PropertyList& file : arrayAt(entry, receipt::kFiles))
      receipt.steps.push_back(stepIn(dictionaryIn(file), action, false, textAt(entry, receipt::kItem)));
  }
}

// Whether there is nothing but locks that were taken away and set again, as around a restore that failed.
bool areAllLockedAgain(const std::vector<ReceiptStep>& steps) {
  std::map<std::string, int> taken;  // locks, and not set again
  for (const ReceiptStep& step : steps) {
    if (!isOfLocks(step.action)) return false;
    taken[step.path] += step.action == FileAction::Unlock ? 1 : -1;
  }
  return std::ranges::all_of(taken, [](const auto& path) { return path.second == 0; });
}

// Of what was planned only that remains which nothing says was done, and nothing at all of a task that has ended. One
// file may be restored twice; a folder that was made is noted again when it is full, a copy when it is made anew. One
// that was made and removed again, as a backup that found no files, is as if it had never been, and so is what made way
// for it and came back: of that alone the way back has a place, the one in the Trash.
void dropOvertaken(Receipt& receipt) {
  std::set<std::pair<FileAction, std::string>> done;
  std::set<std::pair<std::string, std::string>> returned;  // a path, and where in the Trash it had been
  std::vector<ReceiptStep> kept;
  for (auto step = receipt.steps.rbegin(); step != receipt.steps.rend(); ++step) {
    const bool isKnown = !done.emplace(step->action, step->path).second;
    const bool isOnce = step->action == FileAction::Create || step->action == FileAction::Replace;
    const bool isWayBack = step->isDone && step->action == FileAction::PutBack && !step->place.empty();
    if (isWayBack) returned.emplace(step->path, step->place);
    const bool hasReturned =
        isWayBack || (step->action == FileAction::Trash && returned.contains({step->path, step->place}));
    const bool isOvertaken = hasReturned || (isKnown && (!step->isDone || isOnce));
    if (!isOvertaken && (step->isDone || !receipt.ended)) kept.push_back(std::move(*step));
  }
  std::erase_if(kept, [&](const ReceiptStep& step) {
    const auto has = [&](FileAction action) { return done.contains({action, step.path}); };
    const bool isPassing = step.action == FileAction::Create || step.action == FileAction::Remove;
    return isPassing && step.isDone && has(FileAction::Create) && has(FileAction::Remove);
  });
  if (receipt.ended && areAllLockedAgain(kept)) kept.clear();
  std::ranges::reverse(kept);
  receipt.steps = std::move(kept);
}

// Each entry is a line. What a killed process left of its last one is cut away.
std::string closed(std::string bytes) {
  if (bytes.ends_with("\n)\n")) return bytes;
  bytes.erase(bytes.rfind('\n') + 1);
  return bytes + ")\n";
}

Receipt parse(const std::string& bytes) {
  const auto list = parsePropertyList(closed(bytes));
  const PropertyListArray* entries = list ? list->asArray() : nullptr;
  if (!entries || entries->empty()) throw DamagedReceipt();
  Receipt receipt;
  readHead(dictionaryIn(entries->front()), receipt);
  for (std::size_t i = 1; i < entries->size(); ++i) readEntry(dictionaryIn((*entries)[i]), receipt);
  dropOvertaken(receipt);
  return receipt;
}

// Whether it is to be taken back in its turn: tasks are, and what did a task again.
bool isToUndo(const Receipt& receipt, const std::vector<Receipt>& receipts) {
  const Origin origin = originOf(receipt, receipts);
  return canBeTakenBack(receipt) && origin.task->undoes.empty() && !origin.isUndo;
}

Undone extentOf(const Receipt& undo) {
  if (undo.outcome == receipt::kWhole) return Undone::Whole;
  return undo.steps.empty() ? Undone::Nothing : Undone::InPart;
}

// Of what took something back it is known only once the task itself was read.
bool holdNewestToUndo(const std::vector<Receipt>& receipts) {
  return newestToUndo(receipts) && std::ranges::none_of(receipts, [&](const Receipt& receipt) {
           return canBeTakenBack(receipt) && !originOf(receipt, receipts).task->undoes.empty();
         });
}

// The newest first, until those that were read are enough. A task that took another back is newer than that, so that it
// is known first.
Result<std::vector<Receipt>> receiptsUntil(bool (*areEnough)(const std::vector<Receipt>&)) {
  std::vector<Receipt> receipts;
  std::map<std::string, Undone> undone;
  std::set<std::string> undoneWithAttempts;  // of what took these back no earlier attempt counts either
  const auto names = receiptNames();
  if (!names) {
    QWLog::appendLog("The receipts cannot be read: %@", names.error().text);
    return Error{names.error().code, "The receipts cannot be read. " + names.error().text};
  }
  for (const std::string& name : *names) {
    auto receipt = readReceipt(name);
    if (!receipt) {
      QWLog::appendLog("%@", receipt.error().text);
      continue;
    }
    if (undoneWithAttempts.contains(receipt->undoes)) undone.emplace(name, Undone::Whole);
    if (const auto known = undone.find(name); known != undone.end()) receipt->undone = known->second;
    if (receipt->undone && !receipt->undoes.empty()) undoneWithAttempts.insert(receipt->undoes);
    const bool isThrough = receipt->outcome == receipt::kWhole || receipt->outcome == receipt::kInPart;
    if (isThrough && !receipt->undone) {
      Undone& extent = undone[receipt->undoes];
      extent = std::max(extent, extentOf(*receipt));
    }
    receipts.push_back(std::move(*receipt));
    if (areEnough(receipts)) break;
  }
  return receipts;
}

}  // namespace

Result<Receipt> readReceipt(const std::string& name) {
  const auto folder = receiptFolder();
  if (!folder) return Error{std::errc::no_such_file_or_directory, "There is no home folder."};
  const std::string path = receiptPath(*folder, name);
  const auto bytes = Runtime::current().platform().files.read(path);
  if (!bytes) return bytes.error();
  try {
    Receipt receipt = parse(*bytes);
    receipt.name = name;
    receipt.isRunning = !receipt.ended && isReceiptHeld(path);
    return receipt;
  } catch (const DamagedReceipt&) {
    return Error{
        std::errc::invalid_argument, "The receipt " + path + " is damaged.",
        "Its task cannot be taken back by a command; what it moved is in the Trash. The receipt may be deleted."};
  }
}

std::vector<UnreadableReceipt> unreadableReceipts(const std::vector<Receipt>& receipts) {
  std::vector<UnreadableReceipt> unreadable;
  const auto names = receiptNames();
  if (!names) return unreadable;
  for (const std::string& name : *names) {
    if (std::ranges::find(receipts, name, &Receipt::name) != receipts.end()) continue;
    const auto receipt = readReceipt(name);
    if (receipt || meansMissing(receipt.error())) continue;
    const Error& cause = receipt.error();
    unreadable.push_back({name, cause.cure.empty() ? cause.text : cause.text + " " + cause.cure});
  }
  return unreadable;
}

bool didNothing(const Receipt& receipt) {
  return receipt.ended && receipt.steps.empty();
}

bool removedForGood(const Receipt& receipt) {
  return !receipt.steps.empty() &&
         std::ranges::all_of(receipt.steps, [](const ReceiptStep& step) { return step.action == FileAction::Remove; });
}

bool canBeTakenBack(const Receipt& receipt) {
  return !receipt.undone && !receipt.isRunning && !didNothing(receipt) && !removedForGood(receipt);
}

Result<std::vector<Receipt>> allReceipts() {
  return receiptsUntil([](const std::vector<Receipt>&) { return false; });
}

Result<std::vector<Receipt>> receiptsDownToNewestToUndo() {
  return receiptsUntil(holdNewestToUndo);
}

const Receipt* newestToUndo(const std::vector<Receipt>& receipts, const ReceiptFilter& counts) {
  const auto found = std::ranges::find_if(receipts, [&](const Receipt& receipt) {
    return isToUndo(receipt, receipts) && (!counts || counts(*originOf(receipt, receipts).task));
  });
  return found == receipts.end() ? nullptr : &*found;
}

Origin originOf(const Receipt& receipt, const std::vector<Receipt>& receipts) {
  Origin origin{.task = &receipt, .isUndo = false};
  for (const Receipt& older : receipts) {
    if (older.name != origin.task->undoes) continue;
    origin = {.task = &older, .isUndo = !origin.isUndo};
  }
  return origin;
}

// Names grow, whatever spoilt receipts say of each other.
const Receipt& lastDoingOf(const Receipt& receipt, const std::vector<Receipt>& receipts) {
  for (const Receipt& undo : receipts) {
    if (undo.undoes != receipt.name || undo.name <= receipt.name || !undo.undone) continue;
    for (const Receipt& again : receipts)
      if (again.undoes == undo.name && again.name > undo.name && canBeTakenBack(again))
        return lastDoingOf(again, receipts);
  }
  return receipt;
}

}  // namespace vantory
