// Help for getting help: what support wants to see.
#pragma once

#include <string>
#include <vector>

namespace vantory {

// Everything here blocks until the person has read what is said at the end, and may be called from any thread: a window
// calls it in the background.
class QWTroubleshootingUtils {
 public:
  // Packs the logs, crash reports and preference files of these programs of the maker, and the additional files or
  // folders, into one archive on the desktop: "NAME Logs.zip", after the first name. An older one stays, the new one
  // then has the date in its name. Silent, only a failure is told. True when the archive is there, whole; otherwise
  // nothing new is.
  static bool gatherLogsForAppsWithNames(const std::vector<std::string>& names, bool silent,
                                         const std::vector<std::string>& additionalFiles);
  static bool gatherLogsForAppsWithNames(const std::vector<std::string>& names, bool silent);
  static bool gatherLogsForAppsWithNames(const std::vector<std::string>& names);
  static bool gatherLogsForAppWithName(const std::string& name);

  // Opens the program's current log in the user's viewer.
  static void viewLogForApp(const std::string& name);
  // The same for "NAME.1.task.log".
  static void viewTaskLogForApp(const std::string& name);
};

}  // namespace vantory
