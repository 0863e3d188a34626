// A receipt that was read: what a task was about to do, and what it did.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Result.h"
#include "base/Timestamp.h"
#include "services/TaskReport.h"
#include "services/receipts/FileTraits.h"

namespace vantory {

// One file or folder. Everything in it comes from disk: nothing is known of its paths but that they are whole and
// plain.
struct ReceiptStep {
  FileAction action = FileAction::Copy;
  bool isDone = false;  // else it was planned, and what became of it is not known
  std::string path;
  std::string item;
  std::string source;
  std::string place;
  bool wasThere = false;  // something bore the path when this was planned
  // Of what was put there; of a planned move, of what was to be moved. Where the Trash has no notes, of what was moved
  // to it, or when this was planned bore the path: as ownTraitsOf() has them.
  std::optional<FileTraits> traits;
};

// How much of a task was taken back by an undo.
enum class Undone { Nothing, InPart, Whole };

struct Receipt {
  std::string name;
  std::string task;
  std::vector<std::string> operands;
  std::string run;     // the run over many homes that it was part of; empty for none
  std::string undoes;  // the receipt that the task took back; empty for none
  Timestamp begun;
  std::optional<Timestamp> ended;  // none for a task that runs or was killed
  std::string outcome;             // one of receipt::kWhole and its like; empty where it has not ended
  bool isRunning = false;
  std::optional<Undone> undone;    // none where no undo counts, or is known: it is in a list of all
  std::vector<ReceiptStep> steps;  // in the order of the task; of planned ones those that may have been done
};

// What the name of a run over many homes begins with, and that of a receipt never.
inline constexpr std::string_view kRunPrefix = "run-";

// Fails where there is none of that name, or it is damaged. One that was not ended has what is whole of it.
Result<Receipt> readReceipt(const std::string& name);

// Everything that can be read, the newest first. A damaged receipt is logged and left out. Fails where they cannot be
// listed.
Result<std::vector<Receipt>> allReceipts();
// Of those the first ones, as many as tell which is newestToUndo(), and what task it is about.
Result<std::vector<Receipt>> receiptsDownToNewestToUndo();

// A receipt that was left out.
struct UnreadableReceipt {
  std::string name;
  std::string reason;  // with what can be done about it
};

// The newest first, but for what is among the receipts.
std::vector<UnreadableReceipt> unreadableReceipts(const std::vector<Receipt>& receipts);

// Whether the task is through and changed nothing, which nobody needs to hear of.
bool didNothing(const Receipt& receipt);

// Whether all that the task did was to remove, as pruning does.
bool removedForGood(const Receipt& receipt);

// Not one that runs, was taken back, did nothing or removed for good. Known only of one in a list of all.
bool canBeTakenBack(const Receipt& receipt);

// The newest that can be taken back, and took nothing back itself: that is done again by its name only. What did a task
// again counts as that task, which must be one that `counts`, where that is given. Null where there is none.
using ReceiptFilter = std::function<bool(const Receipt& task)>;
const Receipt* newestToUndo(const std::vector<Receipt>& receipts, const ReceiptFilter& counts = {});

// What a receipt is about: the task itself, or what in the end took it back or did it again, step by step.
struct Origin {
  const Receipt* task;  // the oldest that is known
  bool isUndo;          // else it did the task, perhaps again
};
// The receipts are the newest first.
Origin originOf(const Receipt& receipt, const std::vector<Receipt>& receipts);

// The receipt by which the task is taken back: its own, or that of the last time it was done again.
const Receipt& lastDoingOf(const Receipt& receipt, const std::vector<Receipt>& receipts);

}  // namespace vantory
