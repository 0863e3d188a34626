// The backup that an operand names.
#pragma once

#include <string>

#include "backups/QWDataController.h"

namespace vantory {

// The listed backups that are meant by a name, which may be that of the folder, or by a path, which stands for itself
// at `path` too.
BackupList backupsMeant(const std::string& name, const std::string& path);
// All backups that are listed, those made by hand first, each kind by name.
BackupList sortedBackups();
// Why no backup, or no single one, is meant by the name; a sentence.
std::string faultOfName(const std::string& name, const BackupList& meant);

// The backup to read: of the listed ones by its name, or any by its path. Fails with such a sentence where there is no
// single one, and where it is incomplete.
Result<std::shared_ptr<QWBackup>> backupToRead(const std::string& operand);

}  // namespace vantory
