// "--undo": takes a task back.

#include <algorithm>
#include <set>

#include "backups/QWDataController.h"
#include "base/Format.h"
#include "base/Spelling.h"
#include "platform/FileSystem.h"
#include "services/log/QWLog.h"
#include "services/receipts/ReceiptFolder.h"
#include "services/receipts/ReceiptText.h"
#include "services/receipts/TaskReceipt.h"
#include "tasks/AppController.h"
#include "tasks/TaskCommand.h"
#include "undo/UndoRun.h"

namespace vantory {

namespace {

int refuse(const CommandContext& context, const std::string& reason) {
  return context.refuse({.text = "Vantory: " + reason, .title = "Vantory", .description = reason, .console = reason});
}

std::string faultOf(const std::string& name, const std::vector<Receipt>& receipts) {
  const auto known = receiptNames();
  if (known && std::ranges::find(*known, name) != known->end())
    if (const auto receipt = readReceipt(name); !receipt) return receipt.error().text;
  std::vector<std::string> names;
  names.reserve(receipts.size());
  for (const Receipt& receipt : receipts) names.push_back(receipt.name);
  const auto nearest = nearestWord(name, names);
  return nearest ? formatted("There is no receipt \"%@\": did you mean \"%@\"?", name, *nearest)
                 : formatted("There is no receipt \"%@\". \"vantory --receipts\" lists them.", name);
}

// What stayed where the task was taken back in part may be possible now.
bool isUndoneWhole(const Receipt& receipt, const std::vector<Receipt>& receipts) {
  return receipt.isUndone && std::ranges::any_of(receipts, [&](const Receipt& other) {
           return other.undoes == receipt.name && !other.isUndone && other.outcome == receipt::kWhole;
         });
}

}  // namespace

int undoCommand(const CommandContext& context) {
  std::size_t count = context.operandCount();
  if (count > 0 && asksForNotifications(*context.operand(count))) --count;
  if (count > 1) return refuse(context, formatted("\"%@\" is one operand too many.", *context.operand(2)));
  const auto hold = holdForUndo();
  if (!hold && hold.error().code == std::errc::timed_out) return refuse(context, hold.error().text);
  if (const auto names = receiptNames(); !names)
    return refuse(context, "The receipts cannot be read. " + names.error().text);
  const std::vector<Receipt> receipts = allReceipts();
  const Receipt* receipt = newestToUndo(receipts);
  if (count == 1) {
    const std::string name = *context.operand(1);
    const auto named = std::ranges::find(receipts, name, &Receipt::name);
    if (named == receipts.end()) return refuse(context, faultOf(name, receipts));
    receipt = &lastDoingOf(*named, receipts);
  }
  if (count == 0)
    for (const UnreadableReceipt& other : unreadableReceipts(receipts))
      if (!receipt || other.name > receipt->name) context.report.notice(other.reason);
  if (!receipt) return refuse(context, "There is no task to take back.");
  const std::string task = formatted("\"%@\" of %@", receipt->task, localTimeText(receipt->begun, "%F %T"));
  if (receipt->isRunning) return refuse(context, formatted("%@ is not through yet.", task));
  if (isUndoneWhole(*receipt, receipts)) return refuse(context, formatted("%@ was taken back already.", task));
  QWLog::appendLog("Taking %@ back", task);
  QWDataController::sharedController().populateApps();
  if (context.receipt) context.receipt->takesBack(receipt->name);
  UndoRun(*receipt, receipts, context.report).run();
  if (context.receipt) context.receipt->end();  // while it is held
  // Of one that was replaced, both went back.
  std::set<std::string> paths;
  for (const FileReport& file : context.report.files())
    if (file.outcome == FileReport::Outcome::Done && file.action != FileAction::Write) paths.insert(file.path);
  if (!paths.empty())
    context.report.summarize(formatted("Took %@ back: %@.", task, counted(paths.size(), "file")));
  else
    context.report.summarize(formatted(
        context.report.hasDone(FileAction::Write) ? "Took %@ back." : "There was nothing left of %@ to take back.",
        task));
  return 0;
}

}  // namespace vantory
