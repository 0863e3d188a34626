// The sheet in which a backup is named and its projects are listed.
#pragma once

#include <QDialog>
#include <functional>
#include <string>

#include "backups/ui/BackupDialogView.h"

class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QToolButton;

namespace vantory {

class BackupDialog : public QDialog, public BackupDialogView {
 public:
  explicit BackupDialog(QWidget* parent);

  // What the person asked for.
  struct Actions {
    std::function<void()> confirm, cancel, addProject, removeProject, enableHandling, expand, contract, nameChanged;
  };
  void setActions(Actions actions) { actions_ = std::move(actions); }

  void show(const std::string& confirmTitle) override;
  void close() override;
  std::string name() const override;
  void setName(const std::string& name) override;
  void setRemark(const std::string& text) override;
  void setKeptName(const std::string& text) override;
  void setContents(const std::string& text) override;
  void setProjects(const std::vector<std::string>& projects) override;
  std::vector<std::size_t> selectedProjects() const override;
  void setProjectListShown(bool shown) override;
  void setHandlingNoticeShown(bool shown) override;

  // Escape and the window's own button cancel.
  void reject() override;

 private:
  QLabel* makeSentence();
  static void showSentence(QLabel& label, const std::string& text);
  QWidget* makeProjectArea();
  QWidget* makeHandlingNotice();
  QWidget* makeButtons();
  void connectParts();

  Actions actions_;
  QLineEdit* const nameField_;
  QLabel* const keptName_;
  QLabel* const contents_;
  QLabel* const remark_;
  QToolButton* const disclosure_;
  QListWidget* const projects_;
  QPushButton* const addButton_;
  QPushButton* const removeButton_;
  QPushButton* const confirmButton_;
  QWidget* const handlingNotice_;
  QWidget* const projectArea_;
  std::string givenName_;  // as it was set: a name that is no text stays as it is unless it is changed
};

}  // namespace vantory
