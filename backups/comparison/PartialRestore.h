// Putting back a part of what a comparison found: items, single files, single keys.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "backups/comparison/Comparison.h"
#include "base/KeyPath.h"
#include "base/Result.h"

namespace vantory {

class QWBackup;
class TaskReport;

struct FileChoice {
  FileComparison file;        // different, or added
  std::vector<KeyPath> keys;  // that the backup has, to be put into the present property list; empty for the whole file
};

struct ItemChoice {
  std::string key;                // of the item
  std::vector<FileChoice> files;  // empty for the whole item
};

// The files of an item that the keys are in, which must differ in each of them. Fails where a key is in none or in
// several, with a sentence that says what to do.
Result<std::vector<FileChoice>> filesWithKeys(const ItemComparison& item, const std::vector<KeyPath>& keys);

// Restores what was chosen of the backup, application by application as QWBackup::restore() does: those that run are
// closed first, what is replaced goes to the Trash, and all is on disk when it returns.
void restorePartly(const std::shared_ptr<QWBackup>& backup, const std::vector<ItemChoice>& choices, TaskReport& report,
                   bool closeAutomatically = false);

}  // namespace vantory
