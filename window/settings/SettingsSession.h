// The settings window with its controller.
#pragma once

#include <memory>

#include "settings/ui/QWPreferenceController.h"
#include "window/settings/SettingsWindow.h"

namespace vantory {

// There is one window, made when it is first shown. Main thread.
class SettingsSession {
 public:
  // The window belongs to that one, which outlives the session, as the delegate does (null for none).
  SettingsSession(QWidget* parent, PreferenceDelegate* delegate);
  ~SettingsSession();

  // Opens the window, or brings the open one to the front.
  void show();
  // What is being typed there counts, and may lead to questions.
  void close();
  // Shows the settings as they are now.
  void refresh();
  // Null while it is not on the screen.
  SettingsWindow* window() const;

 private:
  struct Parts;

  QWidget* const parent_;
  PreferenceDelegate* const delegate_;
  std::unique_ptr<Parts> parts_;
};

}  // namespace vantory
