// Puts a receipt into words.
#include "tasks/ReceiptTitle.h"

#include <algorithm>
#include <set>
#include <utility>

#include "backups/QWDataController.h"
#include "base/Format.h"
#include "base/Paths.h"
#include "services/receipts/Receipt.h"
#include "services/receipts/ReceiptText.h"

namespace vantory {

namespace {

// The applications whose items the task had to do with; many are counted only.
std::string applicationsOf(const Receipt& receipt) {
  std::set<std::string> keys;
  for (const ReceiptStep& step : receipt.steps) keys.insert(step.item);
  std::vector<std::string> names;
  for (const auto& app : QWDataController::sharedController().appArray())
    if (app->holdsAnyOf(keys)) names.push_back(app->name());
  if (names.size() > 2) return formatted("%i applications", names.size());
  return names.empty() ? "" : names.size() == 1 ? names.front() : names[0] + " and " + names[1];
}

struct Words {
  const char* task;
  const char* title;
  bool namesBackup;  // by its first operand
};

constexpr Words kWords[] = {{"trash", "Trash", false},
                            {"restore", "Restore", true},
                            {"restoredefault", "Restore", false},
                            {"restore-keys", "Restore of Keys", true},
                            {"backup", "Backup", true},
                            {"autobackup", "Automatic Backup", false},
                            {"lock", "Lock", false},
                            {"unlock", "Unlock", false},
                            {"import", "Import", true},
                            {"default", "Change of the Default Backup", false},
                            {"rename", "Rename", true},
                            {"remove", "Removal", true},
                            {"update", "Update", true},
                            {"prune", "Pruning", false},
                            {"undo", "Undo", false}};

std::string objectOf(const Receipt& receipt, bool namesBackup) {
  if (namesBackup && !receipt.operands.empty()) {
    const std::string name = paths::lastComponent(receipt.operands.front());
    return "\"" + (paths::extension(name) == "vnt" ? paths::withoutExtension(name) : name) + "\"";
  }
  return applicationsOf(receipt);
}

std::string ownTitleOf(const Receipt& receipt) {
  const auto known = std::ranges::find(kWords, receipt.task, &Words::task);
  const bool isKnown = known != std::end(kWords);
  std::string title = isKnown ? known->title : receipt.task;
  const std::string object = objectOf(receipt, isKnown && known->namesBackup);
  if (!object.empty()) title += " of " + object;
  const bool isOneBackup = receipt.task == "rename" || receipt.task == "remove";
  const std::size_t files = isOneBackup ? 0 : filesIn(receipt);
  return files == 0 ? title : title + ", " + counted(files, "file");
}

}  // namespace

std::size_t filesIn(const Receipt& receipt) {
  // Locks that a task took away and set again, to get at its files, are no files of its own.
  std::set<std::string> paths, locks;
  for (const ReceiptStep& step : receipt.steps)
    if (step.isDone && step.action != FileAction::Create && step.action != FileAction::Replace &&
        step.action != FileAction::Default)
      (isOfLocks(step.action) ? locks : paths).insert(step.path);
  return paths.empty() ? locks.size() : paths.size();
}

const char* stateOf(const Receipt& receipt) {
  if (receipt.isRunning) return "running";
  if (receipt.undone == Undone::Nothing) return "not undone";
  if (receipt.undone) return receipt.undone == Undone::Whole ? "undone" : "undone in part";
  if (!receipt.ended) return "killed";
  return receipt.outcome == receipt::kWhole ? "done" : "in part";
}

std::string titleOf(const Receipt& receipt, const std::vector<Receipt>& all) {
  const Origin origin = originOf(receipt, all);
  if (origin.task == &receipt) return ownTitleOf(receipt);
  return (origin.isUndo ? "Undo of " : "Redo of ") + ownTitleOf(*origin.task);
}

}  // namespace vantory
