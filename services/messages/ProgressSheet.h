// The window's progress sheet, as the program sees it.
#pragma once

#include <string>

namespace vantory {

// A sheet over the main window with a label, a bar and a cancel button. Main thread.
class ProgressSheet {
 public:
  virtual ~ProgressSheet() = default;
  virtual void show() = 0;
  virtual void hide() = 0;
  virtual void setLabel(const std::string& text) = 0;
  virtual void setIndeterminate() = 0;
  virtual void setMaximum(double maximum) = 0;
  virtual void setValue(double value) = 0;
  // What is done now goes on to its end; until the sheet is shown again.
  virtual void disableCancel() = 0;
};

}  // namespace vantory
