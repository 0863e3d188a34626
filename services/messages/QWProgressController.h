// The progress sheet of a long task.
#pragma once

#include <atomic>
#include <string>

namespace vantory {

class ProgressSheet;

// Called on the main thread, but for isCancelled(), which a task polls on its own.
class QWProgressController {
 public:
  // The sheet outlives the controller.
  explicit QWProgressController(ProgressSheet& sheet) : sheet_(sheet) {}

  // Shows the sheet; a cancel of an earlier task is forgotten.
  void show();
  // Takes the sheet off the screen; a task that polls for a cancel stops.
  void hide();
  void updateLabel(const std::string& text);
  void setIndeterminate();
  void setMaxProgress(double maximum);
  void setProgress(double value);
  void incrementProgress();
  // Nobody polls for a cancel any more.
  void disableCancel();
  // The person pressed the button.
  void cancel() { isCancelled_ = true; }
  bool isCancelled() const { return isCancelled_; }

 private:
  ProgressSheet& sheet_;
  double value_ = 0;
  std::atomic<bool> isCancelled_ = false;
};

}  // namespace vantory
