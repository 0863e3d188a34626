// The General pane of the settings window.
#pragma once

#include <functional>
#include <string>

#include "window/controls/FormPane.h"

class QLabel;
class QLineEdit;

namespace vantory {

class BoundControls;

class GeneralPane : public FormPane {
 public:
  explicit GeneralPane(BoundControls& controls);

  // A path was typed, or a folder is to be chosen.
  std::function<void(const std::string& path)> onPath;
  std::function<void()> onBrowse;

  // What is being typed stays.
  void setBackupPath(const std::string& path);
  void setBackupRemark(const std::string& text);
  // Has a path that is being typed count.
  void takePath();

 private:
  QWidget* makePathRow();

  QLineEdit* const path_;
  QLabel* const remark_;
};

}  // namespace vantory
