// What a task did, in a few words for a menu or a list.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace vantory {

struct Receipt;

// How many files, or backups, it is about: a file that was replaced is one.
std::size_t filesIn(const Receipt& receipt);
// Scripts read these words too: "done", "in part", "killed", "running", "undone", "undone in part", or
// "not undone" where an undo found nothing that it could take back.
const char* stateOf(const Receipt& receipt);
// Such as "Trash of Final Cut Pro, 12 files" or "Rename of \"Clean setup\"", and for what took another task back, which
// is looked for among `all`, "Undo of Trash of Final Cut Pro, 12 files" or, where that was an undo, "Redo of ...". The
// catalog names the applications.
std::string titleOf(const Receipt& receipt, const std::vector<Receipt>& all);

}  // namespace vantory
