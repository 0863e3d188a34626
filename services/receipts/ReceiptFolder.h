// Where receipts lie, and what they are called.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/Result.h"
#include "base/Timestamp.h"

namespace vantory {

class FolderHold;

inline constexpr std::size_t kMostReceipts = 100;

// Below the user's own Application Support folder; none where nobody is at the console.
std::optional<std::string> receiptFolder();
std::string receiptPath(const std::string& folder, const std::string& name);
// The names of all receipts, the newest first; none in a folder that is missing.
Result<std::vector<std::string>> receiptNames();
// Such as "20261114-213517-042", by the clock of UTC; but after all that are there, also such as were named while the
// clock was ahead: names tell what came after what.
std::string newReceiptName(const std::string& folder, Timestamp begun);
// Whether the task of a receipt runs still.
bool isReceiptHeld(const std::string& path);
// Held while a task is taken back, so that no other process takes one back meanwhile. Waits two seconds at most, then
// it fails with timed_out.
Result<std::unique_ptr<FolderHold>> holdForUndo();
// Removes the oldest but for those of tasks that run, so that with one more there are no more than is kept.
void pruneReceipts(const std::string& folder);

}  // namespace vantory
