// Chooses the receipt, and runs what takes its task back.
#include "tasks/UndoTask.h"

#include <algorithm>

#include "base/Format.h"
#include "base/Spelling.h"
#include "platform/FileSystem.h"
#include "services/Runtime.h"
#include "services/TaskReport.h"
#include "services/receipts/ReceiptFolder.h"
#include "services/receipts/ReceiptText.h"
#include "services/receipts/TaskReceipt.h"
#include "undo/UndoRun.h"

namespace vantory {

namespace {

Error fault(std::string sentence) {
  return {std::errc::invalid_argument, std::move(sentence)};
}

std::string inWords(const Receipt& receipt) {
  return formatted("\"%@\" of %@", receipt.task, localTimeText(receipt.begun, "%F %T"));
}

Error faultOf(const std::string& name, const std::vector<Receipt>& receipts) {
  const auto known = receiptNames();
  if (known && std::ranges::find(*known, name) != known->end())
    if (const auto receipt = readReceipt(name); !receipt) return receipt.error();
  std::vector<std::string> names;
  names.reserve(receipts.size());
  for (const Receipt& receipt : receipts) names.push_back(receipt.name);
  const auto nearest = nearestWord(name, names);
  return fault(nearest ? formatted("There is no receipt \"%@\": did you mean \"%@\"?", name, *nearest)
                       : formatted("There is no receipt \"%@\". \"vantory --receipts\" lists them.", name));
}

// What stayed where the task was taken back in part may be possible now.
bool isUndoneWhole(const Receipt& receipt, const std::vector<Receipt>& receipts) {
  return receipt.undone && std::ranges::any_of(receipts, [&](const Receipt& other) {
           return other.undoes == receipt.name && !other.undone && other.outcome == receipt::kWhole;
         });
}

bool isRun(const std::string& name) {
  return name.starts_with(kRunPrefix);
}

// No earlier task goes in the place of one that cannot be taken back.
Result<const Receipt*> newestOf(const std::vector<Receipt>& receipts, const ReceiptFilter& counts,
                                const std::string& none) {
  const Receipt* newest = newestToUndo(receipts, counts);
  for (const Receipt& receipt : receipts) {
    if (&receipt == newest) return newest;
    if (!removedForGood(receipt) || !counts(receipt)) continue;
    const std::string next =
        newest ? formatted(" The newest that can be is %@: vantory --undo %@", inWords(*newest), newest->name) : "";
    return fault(formatted("What %@ did was removed for good and cannot be taken back.%@", inWords(receipt), next));
  }
  return Error{kNothingToUndo, none};
}

Result<const Receipt*> newestOf(const std::optional<std::string>& run, const std::vector<Receipt>& receipts) {
  if (run)
    return newestOf(
        receipts, [&](const Receipt& task) { return task.run == *run; },
        formatted("There is nothing of %@ to take back here.", *run));
  if (!Runtime::current().manyHomesRun.empty())
    return newestOf(
        receipts, [](const Receipt& task) { return !task.run.empty(); },
        "There is no task of a run over many homes to take back here.");
  return newestOf(
      receipts, [](const Receipt&) { return true; }, "There is no task to take back.");
}

Result<const Receipt*> receiptNamed(const std::string& name, const std::vector<Receipt>& receipts) {
  const auto named = std::ranges::find(receipts, name, &Receipt::name);
  if (named == receipts.end()) return faultOf(name, receipts);
  if (removedForGood(*named))
    return fault(formatted("What %@ removed is gone for good and cannot be taken back.", inWords(*named)));
  return &lastDoingOf(*named, receipts);
}

}  // namespace

Result<UndoTask> chooseUndo(const std::optional<std::string>& name) {
  auto hold = holdForUndo();
  if (!hold && hold.error().code == std::errc::timed_out) return hold.error();
  auto receipts = allReceipts();
  if (!receipts) return receipts.error();
  const auto chosen = name && !isRun(*name) ? receiptNamed(*name, *receipts) : newestOf(name, *receipts);
  if (!chosen) return chosen.error();
  const Receipt& receipt = **chosen;
  if (receipt.isRunning) return fault(inWords(receipt) + " is not through yet.");
  if (isUndoneWhole(receipt, *receipts)) return fault(inWords(receipt) + " was taken back already.");
  return UndoTask{hold ? std::move(*hold) : nullptr, std::move(*receipts), &receipt};
}

// The receipt is ended while nobody else looks which task is the newest.
void UndoTask::run(TaskReport& report, TaskReceipt* own) const {
  if (own) own->takesBack(receipt->name);
  UndoRun(*receipt, receipts, report).run();
  if (own) own->end();
}

}  // namespace vantory
