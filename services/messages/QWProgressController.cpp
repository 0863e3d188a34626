// Keeps what the sheet shows.
#include "services/messages/QWProgressController.h"

#include "services/messages/ProgressSheet.h"

namespace vantory {

void QWProgressController::show() {
  isCancelled_ = false;
  sheet_.show();
}

// A task that still polls takes it for a cancel.
void QWProgressController::hide() {
  isCancelled_ = true;
  sheet_.hide();
}

void QWProgressController::disableCancel() {
  sheet_.disableCancel();
}

void QWProgressController::updateLabel(const std::string& text) {
  sheet_.setLabel(text);
}

void QWProgressController::setIndeterminate() {
  sheet_.setIndeterminate();
}

void QWProgressController::setMaxProgress(double maximum) {
  sheet_.setMaximum(maximum);
}

void QWProgressController::setProgress(double value) {
  value_ = value;
  sheet_.setValue(value);
}

void QWProgressController::incrementProgress() {
  setProgress(value_ + 1);
}

}  // namespace vantory
