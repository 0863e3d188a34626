// What a task did, in a few words for a menu or a list.
#pragma once

#include <cstddef>
#include <string>

namespace vantory {

struct Receipt;

// How many files, or backups, it is about: a file that was replaced is one.
std::size_t filesIn(const Receipt& receipt);
// Scripts read these words too: "done", "in part", "killed", "running" or "undone".
const char* stateOf(const Receipt& receipt);
// Such as "Trash of Final Cut Pro, 12 files" or "Rename of \"Clean setup\"". The catalog names the applications.
std::string titleOf(const Receipt& receipt);

}  // namespace vantory
