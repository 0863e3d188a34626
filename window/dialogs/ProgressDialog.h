// The sheet that covers the main window during a long task.
#pragma once

#include <QDialog>
#include <functional>

#include "services/messages/ProgressSheet.h"

class QLabel;
class QProgressBar;
class QPushButton;

namespace vantory {

class ProgressDialog : public QDialog, public ProgressSheet {
 public:
  explicit ProgressDialog(QWidget* parent);

  // The person wants the task to stop. The sheet stays until it has.
  std::function<void()> onCancel;
  // For work that must not stop half way.
  void hideCancelButton();

  void show() override;
  void hide() override;
  void setLabel(const std::string& text) override;
  void setIndeterminate() override;
  void setMaximum(double maximum) override;
  void setValue(double value) override;
  void disableCancel() override;

  // Escape and the window's own button cancel.
  void reject() override;

 private:
  QLabel* const label_;
  QProgressBar* const bar_;
  QPushButton* const cancelButton_;
};

}  // namespace vantory
