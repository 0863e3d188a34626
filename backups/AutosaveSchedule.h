// The scheduled automatic backups, as the settings want them.
#pragma once

#include <cstdint>
#include <optional>

#include "base/Timestamp.h"

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

  // Seconds between two backups; none where they are off.
  static std::optional<std::int64_t> interval();

  struct Runs {
    std::optional<Timestamp> last;     // that was good, or when the schedule began; none when that is not known
    std::optional<Timestamp> lastTry;  // none where nothing was tried that is known of
  };
  static Runs runs();
};

}  // namespace vantory
