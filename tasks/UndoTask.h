// Taking a task back, for the command and for the window.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "base/Result.h"
#include "services/receipts/Receipt.h"

namespace vantory {

class FolderHold;
class TaskReceipt;
class TaskReport;

// Which task, chosen and not yet taken back. While it exists no other process takes one back, where that can be had.
struct UndoTask {
  std::unique_ptr<FolderHold> hold;
  std::vector<Receipt> receipts;  // all
  const Receipt* receipt;         // one of them

  // Blocks until it is taken back. The report is filled; what is done is recorded in `own`, which is ended; null for
  // nowhere.
  void run(TaskReport& report, TaskReceipt* own) const;
};

// The code of the error where there is nothing at all to take back.
inline constexpr std::errc kNothingToUndo = std::errc::no_message;

// The task of the named receipt, or the newest. The name of a run over many homes stands for what that did here. In
// such a run the newest is what one of them did, nobody else. Fails with a sentence where there is none that can be
// taken back now.
Result<UndoTask> chooseUndo(const std::optional<std::string>& name);

}  // namespace vantory
