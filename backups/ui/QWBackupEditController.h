// The backup dialog: makes a new backup, or edits one.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "backups/QWBackup.h"
#include "backups/ui/BackupEditor.h"
#include "services/messages/NotificationCenter.h"

namespace vantory {

class BackupDialogView;
class FileChooser;
class QWBackupOutlineController;
class QWRestoreOutlineController;

// Main thread. What it is given outlives it.
class QWBackupEditController : public BackupEditor {
 public:
  struct Parts {
    BackupDialogView& dialog;
    FileChooser& chooser;
    QWBackupOutlineController& backupController;
    QWRestoreOutlineController& restoreController;
    // Whether this program opens the project files, and what makes it do so, which answers whether it does now. Called
    // on another thread.
    std::function<bool()> handlesProjects;
    std::function<bool()> changeHandlerToVantory;
  };
  explicit QWBackupEditController(Parts parts);

  // For a new backup.
  void showBackupDialog();
  void editBackup(const std::shared_ptr<QWBackup>& backup) override;

  // The dialog's commands. backup() leaves it open while something is wrong with the name.
  void backup();
  void cancelBackup();
  // Tells what becomes of the name, which the person has changed.
  void nameDidChange();
  void addProject();
  void removeProject();
  void enableProjectHandling();
  void expandProjectView() override;
  void contractProjectView();

  std::shared_ptr<QWBackup> editedBackup() const { return editedBackup_; }

 private:
  void show(const std::string& confirmTitle);
  void showHandlingNotice();
  void showContents();
  bool isAcceptable(const std::string& name) const;
  bool isEditedName(const std::string& name) const;

  Parts parts_;
  std::vector<std::string> projects_;
  std::shared_ptr<QWBackup> editedBackup_;  // null while a new backup is made
  NotificationCenter::Observation surveyed_;
};

}  // namespace vantory
