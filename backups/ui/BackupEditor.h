// What the library's pane asks of the dialog that edits a backup.
#pragma once

#include <memory>

namespace vantory {

class QWBackup;

class BackupEditor {
 public:
  virtual ~BackupEditor() = default;
  // Shows the dialog for a backup that exists: it will be written anew, from the files that are there now. Main thread.
  virtual void editBackup(const std::shared_ptr<QWBackup>& backup) = 0;
  // Shows the dialog's list of linked projects. Main thread.
  virtual void expandProjectView() = 0;
};

}  // namespace vantory
