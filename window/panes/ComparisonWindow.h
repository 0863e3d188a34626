// The window that shows what a backup would change.
#pragma once

#include <QDialog>
#include <functional>

#include "backups/ui/ComparisonView.h"

class QLabel;

namespace vantory {

class Command;
class QWOutlineView;
class Spinner;

class ComparisonWindow : public QDialog, public ComparisonView {
 public:
  explicit ComparisonWindow(QWidget* parent);

  QWOutlineView& outline() { return *outline_; }
  Command& restore() { return *restore_; }
  // It was closed, by whatever way.
  std::function<void()> onClose;

  void show(const std::string& title) override;
  OutlineView& rows() override;
  void openRows() override;
  void setStatus(const std::string& sentence, bool isBusy) override;
  Button& restoreCommand() override;

 private:
  QLabel* const status_;
  QWOutlineView* const outline_;
  Spinner* const spinner_;
  Command* const restore_;
  bool isBusy_ = false;
};

}  // namespace vantory
