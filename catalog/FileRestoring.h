// Putting single files back in place. At every instant the user's previous file is in its place or in the Trash.
#pragma once

#include <string>

#include "catalog/QWPrefItem.h"
#include "platform/FileSystem.h"

namespace vantory {

class BackupPlace;
class TaskReport;

// What keeps a file or folder of a backup from being put at its place, whatever is there now: a link in the backup, or
// the rule of its item, which may be empty.
Status checkRestoring(const std::string& source, const std::string& destination, const std::string& backupPath,
                      const QWPrefItem::PlaceRule& rule);

// Puts a file or folder of an item of the backup in its place; what was there goes to the Trash. A failure leaves the
// file as it was, is logged, and stands in the report.
void restoreFile(const std::string& source, const BackupPlace& backup, const QWPrefItem& item, TaskReport& report);

// The same with a file that has these bytes and all else of the present one, which must still be as it was when it was
// known by this information.
void replaceContent(const std::string& path, std::string bytes, const FileInfo& known, const std::string& item,
                    TaskReport& report);

// With what the person can do where they are about a copy in the backup that is damaged; `task` and `operands` would
// restore the same from an older backup. Other causes stay as they are.
Error withCureForDamage(Error cause, const BackupPlace& backup, const std::string& source, const std::string& task,
                        const std::string& operands);

}  // namespace vantory
