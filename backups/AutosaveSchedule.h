// The scheduled automatic backups, as the settings want them.
#pragma once

namespace vantory {

// The settings are "periodicAutosave", 1 for on, and "autosaveFrequency", the days between two backups, at least 1. On
// the thread that calls, for up to some seconds.
class AutosaveSchedule {
 public:
  static constexpr const char* kLabel = "com.quarrywell.VantoryAutoSave";

  // After a change of the settings: loads the job anew, or removes it where automatic backups are off.
  static void apply();
  // At the start of the windowed program: loads the job anew where automatic backups are on, else leaves all as it is.
  static void applyAtStart();
};

}  // namespace vantory
