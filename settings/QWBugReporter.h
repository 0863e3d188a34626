// Records starts and orderly ends, so that a crash is noticed at the next start.
#pragma once

#include <optional>
#include <string>

namespace vantory {

// The record is the two dates "launch" and "exit" in the property list at `plistPath`, beside whatever else it holds.
class QWBugReporter {
 public:
  // Looks for a crash since the last start, then records this one.
  static void startBugReporter(const std::string& appName, const std::string& plistPath);
  // Records an orderly end.
  static void stopBugReporter(const std::string& plistPath);

  // The path of the program's crash report that is newer than the last start, where that start had no orderly end.
  // Found, it is handed on unless the user switched that off.
  static std::optional<std::string> checkForCrashes(const std::string& appName, const std::string& plistPath);
};

}  // namespace vantory
