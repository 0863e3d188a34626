// The list of what tasks did lately, each of which can be taken back.
#pragma once

#include <QDialog>
#include <functional>
#include <string>
#include <vector>

#include "tasks/ui/UndoController.h"

class QPushButton;
class QTreeWidget;

namespace vantory {

class RecentTasksDialog : public QDialog {
 public:
  explicit RecentTasksDialog(QWidget* parent);

  // Without rows, until they are set.
  void open() override;
  // The selection stays where it can.
  void setRows(const std::vector<UndoRow>& rows);
  // Called with the receipt that the person chose.
  std::function<void(const std::string& receipt)> onUndo;

 private:
  void undoSelected();
  void enableUndo();
  void showSentence(const QString& text);

  QTreeWidget* const list_;
  QPushButton* const undo_;
};

}  // namespace vantory
