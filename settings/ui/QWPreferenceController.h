// The settings window: what its controls do.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "settings/ui/PreferenceView.h"

namespace vantory {

class FileChooser;

// Main thread. What it is given outlives it.
class QWPreferenceController {
 public:
  struct Parts {
    PreferenceView& view;
    FileChooser& chooser;
    PreferenceDelegate* delegate = nullptr;  // may be null
  };
  explicit QWPreferenceController(const Parts& parts);

  // The window has been loaded: fills and shows it.
  void awakeFromNib();
  void windowWillClose();
  // Shows what is stored now: other programs may have changed it.
  void refresh();

  void toolbarGeneral();
  void toolbarAutosave();
  void toolbarProjectHandling();
  void toolbarHotkeys();

  // A path was typed. One that cannot hold a library is refused with a sentence.
  void setBackupPath(const std::string& path);
  void browse();
  // Makes the folder the library's, and moves the backups there if the person wants that.
  void modifyBackupPath(const std::string& path);

  // A control bound to that key was changed.
  void changeValue(const std::string& key, long long value);
  // Has the schedule follow the settings, on a thread of its own.
  void changeAutosaveSettings();
  // The check box was clicked and shows `required` already.
  void prefsToggleAdminPass(bool required);

  void updatePrefsHandlingText();
  void changeHandlerToFCS();
  void changeHandlerToVantory();

 private:
  class Schedule;

  void switchTo(PreferencePane pane, const char* logLine);
  bool isFree() const;
  void offerMove(const std::string& from, const std::string& to);
  void showBackupPath();
  void showHandling(bool isDefault);

  Parts parts_;
  const std::shared_ptr<Schedule> schedule_;  // may outlive the window
};

}  // namespace vantory
