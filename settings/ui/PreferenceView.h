// The settings window and the program around it, as its controller sees them.
#pragma once

#include <functional>
#include <string>

namespace vantory {

enum class PreferencePane { General, Autosave, ProjectHandling, Hotkeys };

struct HandlerStatus {
  enum class Colour { DarkGreen, Red };

  std::string text;
  std::string note = {};  // a sentence below; empty for none
  Colour colour = Colour::Red;
  bool keystrokeEnabled = false;  // of the check box "showSysSettingsDialog"
};

// Main thread.
class PreferenceView {
 public:
  virtual ~PreferenceView() = default;

  // Puts the pane into the window and marks its toolbar item.
  virtual void showPane(PreferencePane pane) = 0;
  virtual void bringToFront() = 0;
  virtual void setBackupPath(const std::string& path) = 0;
  // A sentence below the path; empty for none.
  virtual void setBackupRemark(const std::string& text) = 0;
  // Shows the value in the control of that key. What a person is typing there stays.
  virtual void setValue(const std::string& key, long long value) = 0;
  virtual void setHandlerStatus(const HandlerStatus& status) = 0;
  // Does the work and returns when it is done. Meanwhile a sheet with the label covers the program's windows, which go
  // on being drawn.
  virtual void doBehindSheet(const std::string& label, const std::function<void()>& work) = 0;
};

// The application's delegate. Main thread.
class PreferenceDelegate {
 public:
  virtual ~PreferenceDelegate() = default;
  // Called when the settings window has opened, and when it closes.
  virtual void disablePrefsMenu() = 0;
  virtual void enablePrefsMenu() = 0;
};

}  // namespace vantory
