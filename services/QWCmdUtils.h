// Whether a user interface exists.
#pragma once

#include <atomic>
#include <string>

namespace vantory {

class QWCmdUtils {
 public:
  static QWCmdUtils& sharedController();

  // True until the command line says otherwise. Whoever might show a dialog asks first.
  bool hasGUI() const { return hasGUI_; }
  void setHasGUI(bool hasGUI) { hasGUI_ = hasGUI; }

  // The working directory of the process.
  static std::string applicationPath();

 private:
  std::atomic<bool> hasGUI_ = true;
};

}  // namespace vantory
