// "--undo": takes a task back.

#include <set>

#include "backups/QWDataController.h"
#include "base/Format.h"
#include "platform/FileSystem.h"
#include "services/TaskReport.h"
#include "services/log/QWLog.h"
#include "tasks/AppController.h"
#include "tasks/TaskCommand.h"
#include "tasks/UndoTask.h"

namespace vantory {

namespace {

int refuse(const CommandContext& context, const std::string& reason) {
  return context.refuse({.text = "Vantory: " + reason, .title = "Vantory", .description = reason, .console = reason});
}

}  // namespace

int undoCommand(const CommandContext& context) {
  std::size_t count = context.operandCount();
  if (count > 0 && asksForNotifications(*context.operand(count))) --count;
  if (count > 1) return refuse(context, formatted("\"%@\" is one operand too many.", *context.operand(2)));
  const auto undo = chooseUndo(count == 1 ? context.operand(1) : std::nullopt);
  if (!undo && undo.error().code == kNothingToUndo) context.report.hadNothingToDo();
  if (!undo) return refuse(context, undo.error().text);
  if (count == 0)
    for (const UnreadableReceipt& other : unreadableReceipts(undo->receipts))
      if (other.name > undo->receipt->name) context.report.notice(other.reason);
  const std::string task = formatted("\"%@\" of %@", undo->receipt->task, localTimeText(undo->receipt->begun, "%F %T"));
  QWLog::appendLog("Taking %@ back", task);
  QWDataController::sharedController().populateApps();
  undo->run(context.report, context.receipt);
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
